#include "library/modShellFolders.h"

#include <QStandardPaths>

QString GetSpecialFolderPath(int number)
{
    if (number == kMyMusicFolder)
        return QStandardPaths::writableLocation(QStandardPaths::MusicLocation);
    return {};
}
