// Renders every window of the program to build/screenshots/<name>.png (or the
// folder given as the first argument), holes transparent, so that anyone can
// look at the skin. tools/screenshots.sh runs it under Xvfb.
#include "core/globals.h"
#include "core/modCommon.h"
#include "skin/CDialog.h"
#include "skin/CPictureButton.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/frmMessage.h"
#include "support/TestGround.h"

#include <QApplication>
#include <QBitmap>
#include <QDir>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QTextStream>
#include <functional>

namespace {
QString gFolder;

// The window as the desktop sees it: face where the mask keeps it, clear elsewhere.
void save(QWidget* window, const QString& name)
{
    QApplication::processEvents();
    QImage face = window->grab().toImage().convertToFormat(QImage::Format_ARGB32);
    if (!window->mask().isEmpty()) {
        QImage shaped(face.size(), QImage::Format_ARGB32);
        shaped.fill(Qt::transparent);
        QPainter p(&shaped);
        p.setClipRegion(window->mask());
        p.drawImage(0, 0, face);
        p.end();
        face = shaped;
    }
    const QString path = QDir(gFolder).filePath(name + QStringLiteral(".png"));
    QTextStream(stdout) << (face.save(path) ? "wrote " : "FAILED ") << path << '\n';
}

// Sample wording for the labels callers fill at run time.
void fillRunTimeText(CSkinWindow* window)
{
    if (QLabel* tooBig = window->Label(QStringLiteral("lblTooBig")))
        tooBig->setText(QStringLiteral("This tone is 212 Kb; your phone takes up to 100 Kb."));
    if (auto* news = window->findChild<QPlainTextEdit*>(QStringLiteral("txtAnnouncement")))
        news->setPlainText(QStringLiteral("Good news! Every new member gets three free quills this month. "
                                          "Tell your friends and get even more."));
}
}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    TestGround ground;
    gFolder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("build/screenshots");
    QDir().mkpath(gFolder);
    gstrChargeText = QStringLiteral("50p, added to your phone bill");

    for (const QString& name : MessageWindowNames()) {
        auto window = MessageWindow(name);
        window->Load();
        fillRunTimeText(window.get());
        window->show();
        save(window.get(), name);
        // The first button lit, as under the mouse.
        if (CPictureButton* first = window->findChild<CPictureButton*>()) {
            first->ShowOver();
            save(window.get(), name + QStringLiteral("-hover"));
        }
        window->Unload();
    }

    {
        CDialog notice;
        notice.Display(QStringLiteral("Making your tone. Please wait (40% complete)"), false, nullptr);
        save(notice.Window(), QStringLiteral("frmGenericOKDialog-notice"));
        notice.HideForm();
    }
    {
        frmGenericOKDialog message;
        message.Load();
        message.Label(QStringLiteral("lblMessage"))
            ->setText(QStringLiteral("Send: the service could not be reached. Check your internet "
                                     "connection and try again."));
        message.show();
        save(&message, QStringLiteral("frmGenericOKDialog"));
        message.Label(QStringLiteral("picOKOver"))->show();
        save(&message, QStringLiteral("frmGenericOKDialog-hover"));
    }
    return 0;
}
