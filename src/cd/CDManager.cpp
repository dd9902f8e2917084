#include "cd/CDManager.h"

#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "platform/AudioConversion.h"

#include <QFile>

namespace {
constexpr double kFadeSeconds = 1.0;
constexpr double kNoFadeUpTo = 5.0;
const QString kDefaultBoost = QStringLiteral("3");

// A switch as the settings hold it: "True"/"False" in any case, or a number
// (non-zero is true). Anything else, the empty value included, is false.
bool settingAsBoolean(const QString& key)
{
    const QString text = GetAppSetting(key, kSettings).trimmed();
    if (text.compare(QStringLiteral("true"), Qt::CaseInsensitive) == 0)
        return true;
    bool numeric = false;
    const double value = text.toDouble(&numeric);
    return numeric && value != 0;
}

void convertToAmr(const QString& source, const QString& target, int32_t format, bool fadeIn, bool fadeOut)
{
    AudioFileConverter converter;
    converter.Open(source);
    AmrEncoderSettings settings;
    ConversionJob& job = converter.Job();
    job.TargetFile(target);
    const float duration = converter.DurationSeconds();
    if (duration > kNoFadeUpTo && (fadeIn || fadeOut)) {
        job.FadesEnabled(true);
        if (fadeIn)
            job.FadeInSeconds(kFadeSeconds);
        if (fadeOut)
            job.FadeOutSeconds(kFadeSeconds);
    }
    QString boost = GetAppSetting(QStringLiteral("VolumeBoost"), kSettings).trimmed();
    bool numeric = false;
    boost.toDouble(&numeric);
    if (!numeric)
        boost = kDefaultBoost;
    job.VolumeBoost(boost.toDouble());
    settings.BitRate = format == 1 ? 12200 : 19850;
    settings.Channels = 1;
    settings.EncoderParameterA = 2;
    settings.BitsPerSample = 16;
    settings.EncoderParameterB = 64000;
    job.Run(settings);
}

// Copies the samples through; no fades, no boost.
void copySamples(const QString& sourcePath, const QString& targetPath, int32_t format)
{
    AudioFileStream source;
    AudioFileStream target;
    source.Open(sourcePath, 0, 1);
    if (format == 6)
        target.SetWaveOutput(16000, 1, 16);
    else
        target.SetMp3Output(16000, 24, 1);
    target.Create(targetPath, 0);
    target.SetInputFormat(source.SampleRate(), source.Channels());
    target.WriteAllOf(source);
    target.Close();
    source.Close();
}
}  // namespace

void CDManager::ConvertAudio(QString& SourceFile, QString& TargetFilename, int32_t& PreferredFormat)
{
    const bool fadeIn = settingAsBoolean(QStringLiteral("FadeIn"));
    const bool fadeOut = settingAsBoolean(QStringLiteral("FadeOut"));
    try {
        switch (PreferredFormat) {
        case 1:
        case 2:
            convertToAmr(SourceFile, TargetFilename, PreferredFormat, fadeIn, fadeOut);
            break;
        case 5:
        case 6:
            copySamples(SourceFile, TargetFilename, PreferredFormat);
            break;
        default:
            return;  // QCELP, AAC and unknown values make nothing here
        }
    } catch (const CError& e) {
        MsgBox(QStringLiteral("ConvertAudio: ") + e.Description());
    }
}

CDManager* TheCDManager()
{
    if (!gobjCDManager)
        gobjCDManager = new CDManager;
    return gobjCDManager;
}
