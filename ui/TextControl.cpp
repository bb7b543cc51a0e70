#include "ui/TextControl.h"

// Out of line, so that the interface's type information lives in one translation unit.
CTextBearingControl::~CTextBearingControl() = default;
