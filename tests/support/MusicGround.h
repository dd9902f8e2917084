#pragma once
// A test ground with a music folder of its own: the desktop's music folder
// (XDG_MUSIC_DIR) points into it, and the library file lives in its program
// folder.
#include "core/globals.h"
#include "support/Files.h"
#include "support/TestGround.h"

#include <QDir>
#include <QDomDocument>
#include <QStringList>

class MusicGround : public TestGround {
public:
    MusicGround()
    {
        QDir(root()).mkpath(QStringLiteral("Music/Album"));
        WriteFile(root() + QStringLiteral("/config/user-dirs.dirs"),
                  QByteArray("XDG_MUSIC_DIR=\"") + music().toUtf8() + "\"\n");
        qputenv("XDG_CONFIG_HOME", (root() + QStringLiteral("/config")).toUtf8());
        gstrMyMusicPath = programFolder() + QStringLiteral("/MyMusic.xml");
    }

    QString music() const { return root() + QStringLiteral("/Music"); }
    QString library() const { return gstrMyMusicPath; }

    // Lays out files (their paths under the music folder) with a byte each.
    void songs(const QStringList& files) const
    {
        for (const QString& file : files)
            WriteFile(music() + "/" + file, "x");
    }

    // The Path of each Folder, in file order; "unreadable" when the file is no XML.
    QStringList libraryPaths() const
    {
        QDomDocument doc;
        if (!doc.setContent(ReadFile(library())))
            return {QStringLiteral("unreadable")};
        QStringList paths;
        for (QDomElement e = doc.documentElement().firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
            paths << e.attribute(QStringLiteral("Path"));
        return paths;
    }
};
