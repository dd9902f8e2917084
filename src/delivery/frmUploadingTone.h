#pragma once
// The animation on the screen while a tone is uploaded. Not modal, owned by
// the main window; Enter, Esc or a click hide it and the upload goes on. It
// stays loaded once used, so the next send finds its frame where it stopped.
#include "skin/CSkinWindow.h"

#include <QList>
#include <QPixmap>
#include <cstdint>

class QTimer;

class frmUploadingTone : public CSkinWindow {
    Q_OBJECT
public:
    frmUploadingTone();

    int16_t Frame() const { return mintFrame; }

protected:
    void Form_Load() override;
    void Form_KeyDown(int key) override;
    void Form_Click() override;

private:
    void tmrAnimation_Timer();

    int16_t mintFrame = 0;
    QList<QLabel*> picRippingAnimation;
    QTimer* tmrAnimation = nullptr;
};

// The main window's one uploading window, made on first use and owned by it.
frmUploadingTone& UploadingToneWindow(QWidget* frmMain);
