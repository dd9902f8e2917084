#pragma once
// The hidden settings window (a double click on lblSettings): the tone-size
// limit, the two fades, and a read-only list of the sound devices. The fades
// are saved at each click; closing saves "MaxToneSize", always.
#include "skin/CSkinWindow.h"

class QCheckBox;
class QComboBox;

class frmConfiguration : public CSkinWindow {
    Q_OBJECT
public:
    frmConfiguration();

    void LoadSoundDevices();

protected:
    void Form_Load() override;

private:
    void Command2_Click();

    QComboBox* cmbMaxToneSize = nullptr;
    QCheckBox* cbFadeIn = nullptr;
    QCheckBox* cbFadeOut = nullptr;
    QComboBox* cmbSoundDevices = nullptr;
};
