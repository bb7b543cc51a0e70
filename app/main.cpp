// The program's entry: everything happens inside the toolkit's entry and the application object.
#include <wx/app.h>

int main(int argc, char** argv) { return wxEntry(argc, argv); }
