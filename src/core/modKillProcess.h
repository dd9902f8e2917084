#pragma once
// Ends every process of the machine whose program file path ends with name,
// compared without regard to case; the program's own process is among them
// when name is its file name, and it goes last, so that every other copy
// goes with it. True if any process matched.
#include <QString>

bool KillProcess(const QString& name);

// The name of the program file, as KillProcess takes it on the quit path.
inline const QString kProgramFileName = QStringLiteral("quillotone");
