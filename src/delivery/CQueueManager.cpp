#include "delivery/CQueueManager.h"

#include "core/modCommon.h"

bool CQueueManager::IsDataFilePending() const
{
    return !GetAppSetting(QStringLiteral("CurrentTone"), kToneData).isEmpty();
}
