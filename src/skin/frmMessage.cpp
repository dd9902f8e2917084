#include "skin/frmMessage.h"

#include "core/globals.h"
#include "core/modCommon.h"
#include "skin/CPictureButton.h"

#include <QLabel>

frmMessage::frmMessage(const MessageWindowSpec& spec)
    : CSkinWindow(spec.name), mSpec(spec)
{
}

void frmMessage::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = mSpec.name;
    desc.size = mSpec.size;
    desc.heading = mSpec.heading;
    desc.body = mSpec.body;
    desc.labels = mSpec.labels;
    desc.textBoxes = mSpec.textBoxes;
    for (const MessageButton& b : mSpec.buttons)
        desc.buttons.append({b.name, b.caption, b.look, QRect()});
    Build(desc);

    for (const MessageButton& b : mSpec.buttons) {
        const QString name = b.name;
        connect(Button(name), &CPictureButton::Released, this, [this, name] { Button_Released(name); });
    }
    if (QLabel* charge = Label(QStringLiteral("lblCharge")))
        charge->setText(gstrChargeText);

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    if (mSpec.centredOnScreen)
        CenterOnScreen(this);
    else
        CenterOnMainWindow(this);
}

void frmMessage::Button_Released(const QString& name)
{
    for (const MessageButton& b : mSpec.buttons) {
        if (b.name == name)
            Tag = b.tag;
    }
    Hide();
}

void frmMessage::Form_KeyDown(int key)
{
    const QString& button = key == Qt::Key_Return ? mSpec.enterButton
                            : key == Qt::Key_Escape ? mSpec.escapeButton
                                                    : QString();
    if (!button.isEmpty())
        Button_Released(button);
}

void frmMessage::Form_Click()
{
    if (mSpec.clickUnloads)
        Unload();
}

std::unique_ptr<frmMessage> MessageWindow(const QString& name)
{
    for (const MessageWindowSpec& spec : MessageCatalogue()) {
        if (spec.name == name)
            return std::make_unique<frmMessage>(spec);
    }
    return nullptr;
}

QStringList MessageWindowNames()
{
    QStringList names;
    for (const MessageWindowSpec& spec : MessageCatalogue())
        names << spec.name;
    return names;
}
