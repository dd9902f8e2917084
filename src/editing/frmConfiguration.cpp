#include "editing/frmConfiguration.h"

#include "core/SettingSwitch.h"
#include "core/modCommon.h"
#include "delivery/ToneSizeLimit.h"
#include "platform/NCTAudioRecord2.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"

#include <QCheckBox>
#include <QComboBox>
#include <algorithm>

namespace {

SkinLabel caption(const char* words, QRect rect)
{
    return {QString::fromUtf8(words) + QStringLiteral("Caption"), rect, LabelKind::Text, QString::fromUtf8(words),
            10, false, Qt::AlignLeft | Qt::AlignVCenter};
}

QString truthText(bool checked)
{
    return checked ? QStringLiteral("True") : QStringLiteral("False");
}
}  // namespace

frmConfiguration::frmConfiguration()
    : CSkinWindow(QStringLiteral("frmConfiguration"))
{
}

void frmConfiguration::Form_Load()
{
    SkinWindowDesc d;
    d.name = objectName();
    d.size = QSize(400, 280);
    d.heading = QStringLiteral("Settings");
    d.bodyRect = QRect(0, 0, 1, 1);
    d.labels = {caption("Largest tone", QRect(28, 76, 130, 26)), caption("Fades", QRect(28, 112, 130, 26)),
                caption("Sound devices", QRect(28, 148, 130, 26))};
    d.buttons = {{QStringLiteral("Command2"), QStringLiteral("Close"), ButtonLook::Primary, {}}};
    Build(d);

    cmbMaxToneSize = new QComboBox(this);
    cmbMaxToneSize->setObjectName(QStringLiteral("cmbMaxToneSize"));
    cmbMaxToneSize->setGeometry(164, 76, 130, 26);
    cbFadeIn = new QCheckBox(QStringLiteral("Fade in"), this);
    cbFadeIn->setObjectName(QStringLiteral("cbFadeIn"));
    cbFadeIn->setGeometry(164, 112, 100, 26);
    cbFadeOut = new QCheckBox(QStringLiteral("Fade out"), this);
    cbFadeOut->setObjectName(QStringLiteral("cbFadeOut"));
    cbFadeOut->setGeometry(268, 112, 100, 26);
    cmbSoundDevices = new QComboBox(this);
    cmbSoundDevices->setObjectName(QStringLiteral("cmbSoundDevices"));
    cmbSoundDevices->setGeometry(164, 148, 208, 26);
    for (QWidget* control : {static_cast<QWidget*>(cmbMaxToneSize), static_cast<QWidget*>(cbFadeIn),
                             static_cast<QWidget*>(cbFadeOut), static_cast<QWidget*>(cmbSoundDevices)})
        control->setFont(skin::Font(10));

    connect(cbFadeIn, &QCheckBox::clicked, this,
            [](bool checked) { SaveAppSetting(QStringLiteral("FadeIn"), truthText(checked), kSettings); });
    connect(cbFadeOut, &QCheckBox::clicked, this,
            [](bool checked) { SaveAppSetting(QStringLiteral("FadeOut"), truthText(checked), kSettings); });
    connect(Button(QStringLiteral("Command2")), &CPictureButton::Released, this, &frmConfiguration::Command2_Click);

    CenterOnScreen(this);
    LoadSoundDevices();
    for (const ToneSizeWord& size : ToneSizeWords())
        cmbMaxToneSize->addItem(size.words);
    // An absent or unknown setting leaves the first entry.
    cmbMaxToneSize->setCurrentIndex(
        std::max(0, cmbMaxToneSize->findText(GetAppSetting(QStringLiteral("MaxToneSize"), kSettings))));
    cbFadeOut->setChecked(GetAppSwitch(QStringLiteral("FadeOut")));
    cbFadeIn->setChecked(GetAppSwitch(QStringLiteral("FadeIn")));
}

void frmConfiguration::LoadSoundDevices()
{
    NCTAudioRecord2 recorder;
    if (recorder.DeviceCount() < 1)
        return;
    const int remembered = recorder.CurrentDevice();
    // Up to and including DeviceCount: the one beyond is simply not usable.
    for (int number = 0; number <= recorder.DeviceCount(); ++number) {
        recorder.SetCurrentDevice(number);
        if (recorder.DeviceUsable())
            cmbSoundDevices->addItem(recorder.DeviceName(), number);
    }
    recorder.SetCurrentDevice(remembered);
    // The entry of that device, found by its number: an unusable device
    // before it has no entry, so list positions are no device numbers. An
    // unusable current device shows the last entry.
    const int entry = cmbSoundDevices->findData(remembered);
    cmbSoundDevices->setCurrentIndex(entry >= 0 ? entry : cmbSoundDevices->count() - 1);
}

void frmConfiguration::Command2_Click()
{
    SaveAppSetting(QStringLiteral("MaxToneSize"), cmbMaxToneSize->currentText(), kSettings);
    Unload();
}
