#pragma once
// The first-run window: sign up, sign in with an existing account, or leave.
#include "skin/CSkinWindow.h"

class frmIntro : public CSkinWindow {
    Q_OBJECT
public:
    frmIntro();

protected:
    void Form_Load() override;

private:
    void imgClose_Released();
    void imgOK_Released();
    void imgSignIn_Released();
};

// The program's one intro window, made on first use.
frmIntro& IntroWindow();

// Drops the intro and title windows (the end of a run, or of a test).
void DropStartupWindows();
