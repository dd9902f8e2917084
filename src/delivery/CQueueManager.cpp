#include "delivery/CQueueManager.h"

#include "core/CError.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/modEncryption.h"
#include "core/seams.h"

#include <QFileInfo>
#include <QXmlStreamWriter>

namespace {
const QString kCurrentTone = QStringLiteral("CurrentTone");
}

CQueueManager::CQueueManager()
    : mstrQueuePath(GetAppSetting(QStringLiteral("QueuePath"), kSettings))
{
}

void CQueueManager::DeleteQueuedTone()
{
    SaveAppSetting(QStringLiteral("Delete"), QStringLiteral("1"), kToneData);
}

void CQueueManager::IsDataFilePending(bool& Result) const
{
    Result = IsDataFilePending();
}

bool CQueueManager::IsDataFilePending() const
{
    return !GetAppSetting(kCurrentTone, kToneData).isEmpty();
}

void CQueueManager::ClearToneData()
{
    const QString current = GetAppSetting(kCurrentTone, kToneData);
    if (!current.isEmpty())
        DeleteAppSetting(current, kToneData);
    SaveAppSetting(kCurrentTone, QString(), kToneData);
}

QString CQueueManager::SaveData(const QString& ContentType, const QString& DataFileName, const QString& MobileNumber,
                                const QString& MobileData)
{
    const QFileInfo file(DataFileName);
    if (!file.isFile())
        throw CError(ErrNo::FileNotFound, QStringLiteral("File not found"), QStringLiteral("CQueueManager.SaveData"));

    // A stream writer keeps the attributes in the order the helper and the
    // service read them; quotes and ampersands in values come out escaped.
    QString xml;
    QXmlStreamWriter writer(&xml);
    writer.writeEmptyElement(QStringLiteral("Message"));
    writer.writeAttribute(QStringLiteral("ContentType"), ContentType);
    writer.writeAttribute(QStringLiteral("Filename"), file.fileName());
    writer.writeAttribute(QStringLiteral("QueueIdentifier"), Encrypt(MobileNumber, gstrMachineKey));
    writer.writeAttribute(QStringLiteral("QueueData"), MobileData);
    writer.writeAttribute(QStringLiteral("Created"), DefaultDateTimeText(seams().now()));
    writer.writeAttribute(QStringLiteral("Status"), QStringLiteral("Ready"));
    writer.writeAttribute(QStringLiteral("MobileNumber"), gstrMobileNumber);
    writer.writeAttribute(QStringLiteral("Password"), Decrypt(gstrPassword, gstrMachineKey));
    writer.writeEndDocument();
    xml += QLatin1Char('\n');

    if (gbUseTunnel) {
        // The mark first, the record second: the helper reads them in that order.
        const QString hash = Hash(xml);
        SaveAppSetting(kCurrentTone, hash, kToneData);
        SaveAppSetting(hash, xml.trimmed(), kToneData);
    }
    return xml;
}
