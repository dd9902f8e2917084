#pragma once
// A control's Tag: a text that a window keeps on any of its controls (the
// path behind a status line, the size behind a label), as a property named
// "Tag" so tests and tools read it by name.
#include <QObject>
#include <QString>
#include <QVariant>

inline QString ControlTag(const QObject* control)
{
    return control ? control->property("Tag").toString() : QString();
}

inline void SetControlTag(QObject* control, const QString& tag)
{
    if (control)
        control->setProperty("Tag", tag);
}
