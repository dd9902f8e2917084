#pragma once
// The hidden about window (a double click on lblAbout): the program's version
// and this computer's machine key. A click on Label1 hides it.
#include "skin/CSkinWindow.h"

class frmAbout : public CSkinWindow {
    Q_OBJECT
public:
    frmAbout();

protected:
    void Form_Load() override;
};
