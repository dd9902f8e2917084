#include "support/DialogAnswerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTest>

namespace {
QString textOf(QWidget* window)
{
    if (auto* box = qobject_cast<QMessageBox*>(window))
        return box->text();
    QStringList parts;
    for (QLabel* label : window->findChildren<QLabel*>()) {
        if (!label->text().isEmpty())
            parts << label->text();
    }
    for (QPlainTextEdit* box : window->findChildren<QPlainTextEdit*>())
        parts << box->toPlainText();
    return parts.join(QLatin1Char('\n'));
}

}  // namespace

DialogAnswerer::DialogAnswerer()
{
    mTimer.setInterval(10);
    connect(&mTimer, &QTimer::timeout, this, &DialogAnswerer::poll);
    mTimer.start();
}

DialogAnswerer& DialogAnswerer::answer(const QString& window, const QString& control)
{
    return answer(window, [this, control](QWidget* w) { press(w, control); });
}

DialogAnswerer& DialogAnswerer::answer(const QString& window, Step step)
{
    mQueue.append({window, std::move(step)});
    return *this;
}

QString DialogAnswerer::problems() const
{
    QStringList parts;
    for (const Expected& e : mQueue)
        parts << QStringLiteral("never came: ") + e.window;
    for (const QString& u : unexpected)
        parts << QStringLiteral("unexpected: ") + u;
    return parts.join(QStringLiteral("; "));
}

void DialogAnswerer::poll()
{
    QWidget* modal = QApplication::activeModalWidget();
    if (!modal || mAnswerQueued)
        return;
    // Only a modal window waits for an answer; a notice of the same name is left alone.
    if (!mQueue.isEmpty() && modal->objectName() == mQueue.first().window) {
        const Expected next = mQueue.takeFirst();
        seen.append({next.window, textOf(modal)});
        mAnswered << modal;
        mAnswerQueued = true;
        QMetaObject::invokeMethod(
            this,
            [this, window = QPointer<QWidget>(modal), step = next.step] {
                mAnswerQueued = false;
                if (window)
                    step(window);
            },
            Qt::QueuedConnection);
        return;
    }
    if (mAnswered.contains(QPointer<QWidget>(modal)))
        return;
    unexpected << modal->objectName() + QStringLiteral(": ") + textOf(modal);
    if (auto* box = qobject_cast<QMessageBox*>(modal))
        box->done(QMessageBox::Ok);
    else if (auto* dialog = qobject_cast<QDialog*>(modal))
        dialog->reject();
    else
        modal->hide();
}

void DialogAnswerer::press(QWidget* window, const QString& control)
{
    if (control == QLatin1String("Enter")) {
        QTest::keyClick(window, Qt::Key_Return);
        return;
    }
    if (control == QLatin1String("Escape")) {
        QTest::keyClick(window, Qt::Key_Escape);
        return;
    }
    if (auto* box = qobject_cast<QMessageBox*>(window)) {
        const QMessageBox::StandardButton which = control == QLatin1String("Yes")  ? QMessageBox::Yes
                                                  : control == QLatin1String("No") ? QMessageBox::No
                                                                                   : QMessageBox::Ok;
        if (QAbstractButton* button = box->button(which)) {
            button->click();
            return;
        }
    }
    QWidget* child = window->findChild<QWidget*>(control);
    if (!child) {
        unexpected << window->objectName() + QStringLiteral(" has no control ") + control;
        window->hide();
        return;
    }
    if (auto* button = qobject_cast<QAbstractButton*>(child))
        button->click();
    else
        QTest::mouseClick(child, Qt::LeftButton);
}
