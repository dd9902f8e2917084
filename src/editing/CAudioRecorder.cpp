#include "editing/CAudioRecorder.h"

#include "core/CError.h"
#include "core/modCommon.h"
#include "core/numbers.h"
#include "platform/NCTAmpBar2.h"
#include "platform/NCTAudioRecord2.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

int AmpBarValue(int level)
{
    return RoundToEven(std::max(level - 20, 1) / 0.6);
}

CAudioRecorder::CAudioRecorder(QObject* parent) : QObject(parent)
{
    QDir().mkpath(ScratchFolder());
}

CAudioRecorder::~CAudioRecorder() = default;

QString CAudioRecorder::ScratchFolder()
{
    return GetTempFolder() + QStringLiteral("qtrecordings");
}

bool CAudioRecorder::RecordingExists() const
{
    return !mstrCurrentRecordingPath.isEmpty() && QFileInfo(mstrCurrentRecordingPath).isFile();
}

void CAudioRecorder::StartRecording(const QString& FileToCreate, NCTAmpBar2* LeftChannelAmpRef,
                                    NCTAmpBar2* RightChannelAmpRef)
{
    if (mbRecording)
        return;
    mstrFileToCreate = FileToCreate;
    mstrCurrentRecordingPath = ScratchFolder() + QStringLiteral("/") + CreateUniqueName() + QStringLiteral(".wav");

    mobjAudioRecord.reset();
    mobjAudioFile = std::make_unique<NCTAudioFileWriter2>();
    mobjAudioRecord = std::make_unique<NCTAudioRecord2>(this);
    connect(mobjAudioRecord.get(), &NCTAudioRecord2::EndArrayRecord, this,
            &CAudioRecorder::mobjAudioRecord_EndArrayRecord);
    connect(mobjAudioRecord.get(), &NCTAudioRecord2::Timer, this, &CAudioRecorder::mobjAudioRecord_Timer);
    mobjLeftBar = LeftChannelAmpRef;
    mobjRightBar = RightChannelAmpRef;

    mobjAudioRecord->RecordOptionA = 1;
    mobjAudioRecord->RecordOptionB = true;
    mobjAudioFile->CreateFile(mstrCurrentRecordingPath, 0);
    if (mobjAudioFile->Status() >= 0) {
        mobjAudioRecord->SetFormat(mobjAudioFile->SampleRate(), mobjAudioFile->Channels());
        mobjAudioFile->SetBlockSize(mobjAudioRecord->BytesForMilliseconds(1000));
    }
    mobjAudioRecord->StartArrayRecord();
    if (mobjAudioRecord->Status() < 0)
        mobjAudioRecord->CloseFile();
    mbRecording = true;
}

void CAudioRecorder::mobjAudioRecord_EndArrayRecord()
{
    mobjAudioFile->WriteArray(mobjAudioRecord->GetArray());
}

void CAudioRecorder::mobjAudioRecord_Timer(int64_t CurrentSamples, int LevelLeft, int LevelRight)
{
    if (mobjLeftBar)
        mobjLeftBar->SetValue(AmpBarValue(LevelLeft));
    if (mobjRightBar)
        mobjRightBar->SetValue(AmpBarValue(LevelRight));
    emit Timer(mobjAudioRecord->SamplesToMilliseconds(RoundToEven(CurrentSamples / 1000.0)));
}

void CAudioRecorder::StopRecording()
{
    if (!mbRecording)
        return;
    mbRecording = false;  // also when the take cannot be kept: the next take must be able to start
    mobjAudioRecord->Stop();
    mobjAudioFile->CloseFile();
    const bool written = mobjAudioFile->Status() >= 0 || !QFileInfo::exists(mstrCurrentRecordingPath);
    mobjAudioRecord.reset();
    mobjAudioFile.reset();
    if (!written) {
        // The disk filled during the take: a cut-off file is no take.
        QFile::remove(mstrCurrentRecordingPath);
        throw CError(ErrNo::DiskFull, QStringLiteral("Disk full"));
    }
    moveToFinalName();
}

void CAudioRecorder::moveToFinalName()
{
    const QFileInfo take(mstrCurrentRecordingPath);
    const int n = static_cast<int>(take.dir().entryList(QDir::Files | QDir::Hidden | QDir::System).size());
    const QString target = ScratchFolder() + QStringLiteral("/recording") + QString::number(n) + QStringLiteral(".wav");
    if (!take.isFile())
        throw CError(ErrNo::FileNotFound, QStringLiteral("File not found"));
    if (QFileInfo::exists(target))
        throw CError(ErrNo::FileAlreadyExists, QStringLiteral("File already exists"));
    if (!QFile::rename(mstrCurrentRecordingPath, target))
        throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"));
    mstrCurrentRecordingPath = target;
}
