#pragma once
// The window that runs a search of the user's music folder: it appears,
// starts the search half a second later, counts the songs as they are found
// and goes away by itself when the search has ended. Two controls cancel: the
// picture button at once, the label after asking. It can be dragged by its body.
#include "skin/CSkinWindow.h"

#include <QList>
#include <memory>

class CMusicSearch;
class QTimer;

class frmSearching4Music : public CSkinWindow {
    Q_OBJECT
public:
    frmSearching4Music();
    ~frmSearching4Music() override;

protected:
    void Form_Load() override;

private:
    void Timer1_Timer();
    void tmrAnimation_Timer();
    void imgCancel_Released();
    void lblCancel_Click();
    void cancel();

    std::unique_ptr<CMusicSearch> mobjSearch;
    QTimer* Timer1 = nullptr;
    QTimer* tmrAnimation = nullptr;
    QList<QPixmap> mFrames;
    int mFrame = 0;
};
