#pragma once
// Rips one track to a temporary MP3 with its progress and a cancel button.
// It has a grabber of its own, since the CD window has given up the drive.
// After it hides itself its Tag is the MP3's full path, or empty when the rip
// was cancelled.
#include "skin/CSkinWindow.h"

#include <QList>
#include <QString>
#include <cstdint>
#include <memory>

class NCTAudioCDGrabber2;

inline const QString kTrackUnreadable = QStringLiteral("This track could not be read from the CD. Clean the disc and try again.");
class QTimer;

class frmRipping : public CSkinWindow {
    Q_OBJECT
public:
    frmRipping();
    ~frmRipping() override;

    int16_t RipTrackIndex = 0;  // SessionInd of the track
    QTimer* tmrStartRip = nullptr;

protected:
    void Form_Load() override;
    void Form_KeyDown(int) override {}

private:
    void RipTrack();
    void tmrStartRip_Timer();
    void tmrAnimation_Timer();
    void imgCancel_Released();
    void mobjAudioCDGrabber2_OperationProgress(double progress);
    void mobjAudioCDGrabber2_FreeDBQueryStatus(int32_t status) { mlngQueryStatus = status; }

    std::unique_ptr<NCTAudioCDGrabber2> mobjAudioCDGrabber2;
    QString mstrRippedFile;
    bool mbRipping = false;
    bool mbRipStarted = false;
    bool mbRipCancelled = false;
    bool mbRipFinished = false;
    bool mbRipFailed = false;  // a sector could not be read
    int32_t mlngQueryStatus = 0;  // kept: no lookup happens here
    int mintFrame = 0;
    QList<QPixmap> picRippingAnimation;
    QTimer* tmrAnimation = nullptr;
};
