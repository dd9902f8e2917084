#include "cd/modCDChecking.h"

#include "platform/CDSource.h"
#include "platform/NCTAudioCDGrabber2.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <cdio/cdio.h>
#include <fcntl.h>
#include <linux/cdrom.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {
// A disc of data alone is no audio CD: it is turned away before any lookup.
bool holdsSound(const QByteArray& source)
{
    CdIo_t* cdio = cdio_open(source.constData(), DRIVER_UNKNOWN);
    if (!cdio)
        return false;
    const DiscToc toc = discTocReader()(cdio);
    cdio_destroy(cdio);
    return std::any_of(toc.tracks.begin(), toc.tracks.end(), [](const DiscToc::Entry& e) { return e.audio; });
}
}  // namespace

bool CDInDrive()
{
    const QString path = CDSourcePath();
    if (path.isEmpty())
        return false;
    const QByteArray local = QFile::encodeName(path);
    if (CDSourceIsImage())
        return QFileInfo(path).isFile() && holdsSound(local);
    // Non-blocking, so that an empty drive answers at once instead of waiting for a disc.
    const int fd = ::open(local.constData(), O_RDONLY | O_NONBLOCK);
    if (fd < 0)
        return false;
    const bool present = ::ioctl(fd, CDROM_DRIVE_STATUS, CDSL_CURRENT) == CDS_DISC_OK;
    ::close(fd);
    return present && holdsSound(local);
}
