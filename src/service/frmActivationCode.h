#pragma once
// The picture code window: a picture of a code, a box to type it, OK and
// Cancel. Its Tag holds the code to compare with while the check runs,
// "DONE" once the right code was typed and "Q" after Cancel. It compares
// nothing itself: OK raises CodeEntered to its owner, CActivationCode.
#include "skin/CSkinWindow.h"

class QLabel;
class QLineEdit;

inline const QString kEnterCodeHere = QStringLiteral("Enter code here");

class frmActivationCode : public CSkinWindow {
    Q_OBJECT
public:
    frmActivationCode();

    QLabel* Image1 = nullptr;
    QLineEdit* txtCode = nullptr;
    CPictureButton* imgOK = nullptr;
    CPictureButton* imgCancel = nullptr;

signals:
    void CodeEntered(const QString& Code);

protected:
    void Form_Load() override;

private:
    void txtCode_Change();
    void imgOK_Released();
    void imgCancel_Released();

    bool mbLoaded = false;
};
