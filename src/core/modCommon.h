#pragma once
// The routines that everything else calls: the settings store, the log, the
// percent encoding of service values, the desktop hand-off, the temporary
// folder, the busy state and placement of windows, file-to-hexadecimal
// conversion and unique names.
#include <QColor>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <cstdint>

class QWidget;
class QLineEdit;

inline constexpr char kAppName[] = "Quillotone";
// The program's version: shown by the about window, sent with the version check.
inline constexpr char kAppVersion[] = "1.7.0";
inline const QString kSettings = QStringLiteral("Settings");
inline const QString kToneData = QStringLiteral("ToneData");

// Settings store: per user, values always text, absent reads as "".
QString GetAppSetting(const QString& key, const QString& section);
void SaveAppSetting(const QString& key, const QString& value, const QString& section);
void DeleteAppSetting(const QString& key, const QString& section);
QString SettingsFilePath();

// A date and time in the system's default short text form (log lines, records).
QString DefaultDateTimeText(const QDateTime& when);

// One log line, if "Logging" is "1" at the time of the call.
void WriteLog(const QString& message);
QString LogFilePath();

QString EncodeForUrl(const QString& value);
void OpenInBrowser(const QString& target);
QString GetTempFolder();

// Screen pointer: 0 the default arrow, 11 the hourglass.
enum MousePointerShape { vbDefault = 0, vbHourglass = 11 };
void SetMousePointer(int shape);
int MousePointer();

void SetFormEnabled(QWidget* window, bool bEnabled);
void PrepareDialog(QWidget* window);
void CenterOnScreen(QWidget* window);
void CenterOnMainWindow(QWidget* window);

// Flags of SetLayeredColourKey.
enum LayeredFlags : uint8_t { LWA_COLORKEY = 1, LWA_ALPHA = 2 };
inline const QColor kColourKeyBlue{0, 0, 255};
void SetLayeredColourKey(QWidget* window, const QColor& colour, uint8_t alpha, uint8_t flags);

void SelectAllText(QLineEdit* textbox);
// The box selects all of its text each time it gets the focus.
void SelectAllOnFocus(QLineEdit* textbox);
QString FileToHexString(const QString& path);
QString BuildAccountQuery();
QString CreateUniqueName();
QString GuidToBracedString(const QUuid& guid);
bool IsEvenNumber(int32_t n);
// Text that reads as a number: digits with an optional sign, point and
// exponent, blanks around allowed; empty text is not a number.
bool IsNumeric(const QString& text);
// Whole numbers from a field of a service reply: rounded to the nearest,
// halves to even. Text that is no number raises "Type mismatch", one out of
// range "Overflow".
int16_t TextToInt16(const QString& text);
int32_t TextToInt32(const QString& text);
// A field of a split reply; one past its end raises "Subscript out of range".
const QString& Field(const QStringList& fields, qsizetype index);
