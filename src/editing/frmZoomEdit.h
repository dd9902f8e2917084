#pragma once
// The larger editing window: it opens the main window's file afresh in an
// editor of its own, lets the user trim, play and set the volume, and hands
// back only what the user sees marked and the two measure labels (Tag "OK").
// The file opens 250 ms after the window stands; until then every button
// does nothing. A file that no longer opens is said so, and the window closes.
#include "skin/CSkinWindow.h"

#include <functional>

class AudioEditor2;
class CToneEditor;
class NCTSliderB2;
class QTimer;

class frmZoomEdit : public CSkinWindow {
    Q_OBJECT
public:
    frmZoomEdit();

    void SetFile(const QString& path) { mstrFile = path; }

    QString mstrFile;
    bool mbReady = false;

    // The sound in this window, with its editor and slider.
    CToneEditor* mobjTone = nullptr;
    AudioEditor2* AudioEditor21 = nullptr;
    NCTSliderB2* NCTSliderB21 = nullptr;

protected:
    void Form_Load() override;

private:
    void onReady(const char* button, const std::function<void()>& handler);
    void Timer1_Timer();
    void cmdOK_Released();
    void AudioEditor21_OnEditorMouseMove();

    QTimer* Timer1 = nullptr;
};
