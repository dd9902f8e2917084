#pragma once
// The user's special folders of the desktop.
#include <QString>

// "My Music": the user's music folder (XDG_MUSIC_DIR, else ~/Music).
inline constexpr int kMyMusicFolder = 13;

// The folder of that number; the empty text for a number the desktop has no folder for.
QString GetSpecialFolderPath(int number);
