#pragma once
// A control that shows one text. The language subsystem hands re-labelled texts to it.

#include <string>

class CTextBearingControl {
public:
    virtual ~CTextBearingControl();
    virtual void SetControlText(const std::string& utf8) = 0;
};
