#include "skin/frmMessage.h"

#include "core/globals.h"
#include "core/modCommon.h"
#include "core/MsgBox.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "skin/ControlTag.h"

#include <QLabel>
#include <stdexcept>

frmMessage::frmMessage(const MessageWindowRow& row)
    : CSkinWindow(row.name), mRow(row)
{
}

void frmMessage::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = mRow.name;
    desc.size = mRow.size;
    desc.heading = mRow.heading;
    desc.body = mRow.body;
    desc.labels = mRow.labels;
    desc.textBoxes = mRow.textBoxes;
    for (const MessageButton& b : mRow.buttons)
        desc.buttons.append({b.name, b.caption, b.look, QRect()});
    Build(desc);

    for (const MessageButton& b : mRow.buttons) {
        const QString name = b.name;
        connect(Button(name), &CPictureButton::Released, this, [this, name] { Button_Released(name); });
    }
    if (QLabel* charge = Label(QStringLiteral("lblCharge")))
        charge->setText(gstrChargeText);
    // A hidden aid: the size the caller put in the label's Tag, in a plain box.
    if (auto* tooBig = qobject_cast<CClickLabel*>(Label(QStringLiteral("lblTooBig"))))
        connect(tooBig, &CClickLabel::Click, this, [tooBig] { MsgBox(ControlTag(tooBig)); });

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    if (mRow.centredOnScreen)
        CenterOnScreen(this);
    else
        CenterOnMainWindow(this);
}

void frmMessage::Button_Released(const QString& name)
{
    for (const MessageButton& b : mRow.buttons) {
        if (b.name == name)
            Tag = b.tag;
    }
    Hide();
}

void frmMessage::Form_KeyDown(int key)
{
    const QString& button = key == Qt::Key_Return ? mRow.enterButton
                            : key == Qt::Key_Escape ? mRow.escapeButton
                                                    : QString();
    if (!button.isEmpty())
        Button_Released(button);
}

void frmMessage::Form_Click()
{
    if (mRow.clickUnloads)
        Unload();
}

std::unique_ptr<frmMessage> MessageWindow(const QString& name)
{
    for (const MessageWindowRow& row : MessageCatalogue()) {
        if (row.name == name)
            return std::make_unique<frmMessage>(row);
    }
    return nullptr;
}

QString ShowMessageWindow(const QString& name, const std::function<void(frmMessage&)>& fill)
{
    auto window = MessageWindow(name);
    if (!window)
        throw std::invalid_argument("The message catalogue holds no window named " + name.toStdString());
    window->Load();
    if (fill)
        fill(*window);
    window->Show(true);
    const QString tag = window->Tag;
    window->Unload();
    return tag;
}

QStringList MessageWindowNames()
{
    QStringList names;
    for (const MessageWindowRow& row : MessageCatalogue())
        names << row.name;
    return names;
}
