#pragma once
// The larger editing window: it opens the main window's file afresh in an
// editor of its own, lets the user trim, play and set the volume, and hands
// back only the selection and the two measure labels (Tag "OK"). The file
// opens 250 ms after the window stands; until then every button does nothing.
#include "skin/CSkinWindow.h"

#include <cstdint>

class AudioEditor2;
class NCTSliderB2;
class QTimer;
struct ToneView;

class frmZoomEdit : public CSkinWindow {
    Q_OBJECT
public:
    frmZoomEdit();

    void SetFile(const QString& path) { mstrFile = path; }

    QString mstrFile;
    bool mbPlaying = false;
    bool mbResetting = false;
    float msngTrimOffset = 0;
    bool mbTrimmed = false;
    bool mbReady = false;
    int16_t mintVolumeDirection = 0;

    AudioEditor2* AudioEditor21 = nullptr;
    NCTSliderB2* NCTSliderB21 = nullptr;

protected:
    void Form_Load() override;

private:
    ToneView view();
    void onReady(const char* button, void (frmZoomEdit::*handler)());
    void Timer1_Timer();
    void cmdOK_Released();
    void cmdCancel_Released();
    void cmdTrim_Released();
    void cmdReset_Released();
    void cmdPlay_Released();
    void cmdStop_Released();
    void cmdOpen_Released();
    void AudioEditor21_OnEditorMouseMove();

    QTimer* tmrVolume = nullptr;
    QTimer* Timer1 = nullptr;
};
