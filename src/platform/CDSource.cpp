#include "platform/CDSource.h"

#include "core/modCommon.h"

#include <cdio/cdio.h>

namespace {
QString& chosenImage()
{
    static QString path;
    return path;
}

QString imagePath()
{
    if (!chosenImage().isEmpty())
        return chosenImage();
    return GetAppSetting(QStringLiteral("CDImage"), kSettings).trimmed();
}

QString firstDrive()
{
    char** devices = cdio_get_devices(DRIVER_DEVICE);
    QString first;
    if (devices && devices[0])
        first = QString::fromLocal8Bit(devices[0]);
    cdio_free_device_list(devices);
    return first;
}
}  // namespace

void SetCDImage(const QString& cueSheet) { chosenImage() = cueSheet; }

bool CDSourceIsImage() { return !imagePath().isEmpty(); }

QString CDSourcePath()
{
    const QString image = imagePath();
    return image.isEmpty() ? firstDrive() : image;
}

