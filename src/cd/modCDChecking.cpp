#include "cd/modCDChecking.h"

#include "platform/CDSource.h"

#include <QFile>
#include <QFileInfo>

#include <cdio/cdio.h>
#include <fcntl.h>
#include <linux/cdrom.h>
#include <sys/ioctl.h>
#include <unistd.h>

bool CDInDrive()
{
    const QString path = CDSourcePath();
    if (path.isEmpty())
        return false;
    const QByteArray local = QFile::encodeName(path);
    if (CDSourceIsImage()) {
        if (!QFileInfo(path).isFile())
            return false;
        CdIo_t* image = cdio_open(local.constData(), DRIVER_UNKNOWN);
        if (!image)
            return false;
        cdio_destroy(image);
        return true;
    }
    // Non-blocking, so that an empty drive answers at once instead of waiting for a disc.
    const int fd = ::open(local.constData(), O_RDONLY | O_NONBLOCK);
    if (fd < 0)
        return false;
    const bool present = ::ioctl(fd, CDROM_DRIVE_STATUS, CDSL_CURRENT) == CDS_DISC_OK;
    ::close(fd);
    return present;
}
