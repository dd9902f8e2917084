#pragma once
// One message of the service, shown modally: OK, Enter or Esc close it, and
// so does a click on the window itself.
#include <QDialog>

class QPlainTextEdit;
class QPushButton;

class frmAnnouncements : public QDialog {
    Q_OBJECT
public:
    explicit frmAnnouncements(QWidget* parent = nullptr);

    QPlainTextEdit* txtAnnouncement;
    QPushButton* imgOK;

    // Shows the window modally; returns once it is hidden.
    void Show();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
};
