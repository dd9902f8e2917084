#pragma once
// A failing statement. Routines with a handler catch it once at their end and
// quote Description; routines that let failures pass wrap each statement in
// ResumeNext, which keeps the last failure in an ErrObject for later tests.
#include <QString>
#include <exception>
#include <utility>

struct ErrObject {
    long Number = 0;
    QString Description;
    QString Source;

    bool Stands() const { return Number != 0; }
    void Clear() { *this = ErrObject{}; }
};

class CError : public std::exception {
public:
    CError(long number, QString description, QString source = {})
        : mErr{number, std::move(description), std::move(source)}, mWhat(mErr.Description.toUtf8()) {}

    long Number() const { return mErr.Number; }
    const QString& Description() const { return mErr.Description; }
    const QString& Source() const { return mErr.Source; }
    const ErrObject& Err() const { return mErr; }
    const char* what() const noexcept override { return mWhat.constData(); }

private:
    ErrObject mErr;
    QByteArray mWhat;
};

// Runs one statement; a CError it raises is noted in err and swallowed.
template <class Statement>
void ResumeNext(ErrObject& err, Statement&& statement)
{
    try {
        std::forward<Statement>(statement)();
    } catch (const CError& e) {
        err = e.Err();
    }
}

// The usual run-time error numbers, as the messages quote them.
namespace ErrNo {
constexpr long Overflow = 6;
constexpr long SubscriptOutOfRange = 9;
constexpr long TypeMismatch = 13;
constexpr long FileNotFound = 53;
constexpr long FileAlreadyExists = 58;
constexpr long DiskFull = 61;
constexpr long PathFileAccess = 75;
constexpr long PathNotFound = 76;
}  // namespace ErrNo

// What every reader of sound says of a file it cannot take, and of one that
// holds nothing that decodes; callers compare a failure's Description with
// these, never with their own copy of the words.
inline const QString kFormatNotSupported = QStringLiteral("Format is not supported.");
inline const QString kFileEmptyOrDamaged = QStringLiteral("The file is empty or damaged.");
