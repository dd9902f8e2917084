#include "editing/frmAbout.h"

#include "core/globals.h"
#include "core/modCommon.h"
#include "skin/CClickLabel.h"

#include <QPlainTextEdit>

frmAbout::frmAbout()
    : CSkinWindow(QStringLiteral("frmAbout"))
{
}

void frmAbout::Form_Load()
{
    SkinWindowDesc d;
    d.name = objectName();
    d.size = QSize(400, 230);
    d.heading = QStringLiteral("About Quillotone");
    d.bodyRect = QRect(0, 0, 1, 1);
    d.textBoxes = {{QStringLiteral("txtAbout"), QRect(28, 76, 344, 90), true, true}};
    d.labels = {{QStringLiteral("Label1"), QRect(300, 180, 72, 24), LabelKind::Link, QStringLiteral("Close"), 10,
                 true, Qt::AlignRight | Qt::AlignVCenter}};
    Build(d);
    connect(findChild<CClickLabel*>(QStringLiteral("Label1")), &CClickLabel::Click, this, &frmAbout::Hide);

    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    CenterOnScreen(this);
    auto* txtAbout = findChild<QPlainTextEdit*>(QStringLiteral("txtAbout"));
    txtAbout->setPlainText(QStringLiteral("Version: %1\n").arg(QLatin1String(kAppVersion)) +
                           gstrMachineKey + QStringLiteral("\n"));
}
