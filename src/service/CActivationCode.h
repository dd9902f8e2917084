#pragma once
// The check that a person is at the keyboard. The program invents a code,
// asks the service for a picture of exactly that text and compares what the
// user types with its own copy; each wrong try brings a new code and picture.
#include <QObject>
#include <QString>
#include <memory>

class frmActivationCode;

class CActivationCode : public QObject {
    Q_OBJECT
public:
    CActivationCode();
    ~CActivationCode() override;

    // Runs the whole check modally; true if the user passed it.
    bool DisplayDialog();
    // A new code and its picture.
    void FetchCode();

private slots:
    void mfrm_CodeEntered(const QString& Code);

private:
    void ShowPicture();

    std::unique_ptr<frmActivationCode> mfrm;
    QString mstrImagePath;
    QString mstrCode;
};
