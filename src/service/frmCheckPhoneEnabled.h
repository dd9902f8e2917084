#pragma once
// The first question of sign-up: can the phone take our tones? The answer
// lives in the pictures: imgYes or imgNo holds one when chosen, neither when
// unanswered. A yes fetches the lists of the phone details and goes on.
#include "skin/CSkinWindow.h"

class CClickLabel;
class CSignUpManager;
class QLabel;

class frmCheckPhoneEnabled : public CSkinWindow {
    Q_OBJECT
public:
    explicit frmCheckPhoneEnabled(CSignUpManager& road);

    CClickLabel* imgYes = nullptr;
    CClickLabel* imgNo = nullptr;
    QLabel* imgYesClicked = nullptr;
    QLabel* imgNoClicked = nullptr;
    CPictureButton* imgOK = nullptr;
    QWidget* picBlock = nullptr;
    QLabel* picTalkingToServer = nullptr;
    QLabel* lblClickHere = nullptr;
    CPictureButton* Image1 = nullptr;

protected:
    void Form_Load() override;

private:
    void imgYes_Click();
    void imgNo_Click();
    void imgOK_MouseUp();
    void Image1_Click();

    CSignUpManager& mRoad;
};
