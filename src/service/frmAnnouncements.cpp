#include "service/frmAnnouncements.h"

#include "core/modCommon.h"

#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

frmAnnouncements::frmAnnouncements(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmAnnouncements"));
    setWindowTitle(QStringLiteral("Quillo Tone"));
    txtAnnouncement = new QPlainTextEdit(this);
    txtAnnouncement->setObjectName(QStringLiteral("txtAnnouncement"));
    txtAnnouncement->setReadOnly(true);
    txtAnnouncement->setFocusPolicy(Qt::NoFocus);
    imgOK = new QPushButton(QStringLiteral("OK"), this);
    imgOK->setObjectName(QStringLiteral("imgOK"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(txtAnnouncement);
    layout->addWidget(imgOK, 0, Qt::AlignRight);
    connect(imgOK, &QPushButton::clicked, this, &QWidget::hide);
    resize(360, 220);
    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    CenterOnScreen(this);
}

void frmAnnouncements::Show()
{
    exec();
}

void frmAnnouncements::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Escape) {
        hide();
        return;
    }
    QDialog::keyPressEvent(event);
}

void frmAnnouncements::mousePressEvent(QMouseEvent*)
{
    hide();
}
