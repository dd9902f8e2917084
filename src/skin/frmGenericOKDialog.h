#pragma once
// The window of CDialog: a message made at run time, with one OK button as a
// modal message, or with none as a notice that stays up while work goes on.
// The OK button follows the cursor by polling (Timer1), since the picture
// that reacts lies over the one under test.
#include "skin/CSkinWindow.h"

class QTimer;

class frmGenericOKDialog : public CSkinWindow {
    Q_OBJECT
public:
    frmGenericOKDialog();

    // Shows picOKOver exactly while the cursor is strictly inside picOK.
    void Timer1_Timer();

protected:
    void Form_Load() override;
    void Form_KeyDown(int key) override;

private:
    void picOKOver_MouseDown();
};
