// The program's entry: everything happens inside the toolkit's entry and the application object.
// The application factory is registered here rather than in the app library, so that the test
// programs, which link that library and bring their own application object, never create this one.
#include <wx/app.h>

#include "app/ServerApp.h"

wxIMPLEMENT_APP_NO_MAIN(CServerApp);

int main(int argc, char** argv) { return wxEntry(argc, argv); }
