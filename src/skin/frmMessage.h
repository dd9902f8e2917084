#pragma once
// Every message window with fixed wording is this one class, configured by
// its row of the catalogue: buttons and the Tag each gives, the keys, where
// it centres, and its wording painted into the face. A caller writes
//   if (ShowMessageWindow("frmConfirmExit") == "Q") ...
// The window colour-keys and centres itself at load.
#include "skin/CSkinWindow.h"
#include "skin/SkinDescription.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

struct MessageButton {
    QString name;     // imgOK, imgCancel, imgYes, imgNo, imgDelete
    QString caption;
    QString tag;      // what a release sets in Tag: "" or "Q"
    ButtonLook look = ButtonLook::Primary;
};

struct MessageWindowRow {
    QString name;
    QString heading;
    QString body;
    QList<MessageButton> buttons;
    QString enterButton;          // the button Enter releases; empty: Enter does nothing
    QString escapeButton;         // likewise for Esc
    bool centredOnScreen = false; // else on the main window
    bool clickUnloads = false;    // a click on the body unloads the window
    QSize size{400, 230};
    QList<SkinLabel> labels;
    QList<SkinTextBox> textBoxes;
};

// The catalogue, one row a window.
const QList<MessageWindowRow>& MessageCatalogue();
QStringList MessageWindowNames();

class frmMessage : public CSkinWindow {
    Q_OBJECT
public:
    explicit frmMessage(const MessageWindowRow& row);
    const MessageWindowRow& Row() const { return mRow; }

protected:
    void Form_Load() override;
    void Form_KeyDown(int key) override;
    void Form_Click() override;

private:
    void Button_Released(const QString& name);

    MessageWindowRow mRow;
};

// A new, unloaded window of the catalogue; null for a name it does not hold.
std::unique_ptr<frmMessage> MessageWindow(const QString& name);

// Loads the catalogue's window name, lets fill set it up, shows it modally,
// unloads it and gives back its Tag. A name the catalogue does not hold is a
// fault in the caller: it throws std::invalid_argument naming the window.
QString ShowMessageWindow(const QString& name, const std::function<void(frmMessage&)>& fill = {});
