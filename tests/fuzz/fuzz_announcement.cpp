// An announcement, taken whole into frmAnnouncements and drawn.
#include "FuzzKit.h"
#include "skin/frmMessage.h"

#include <QPlainTextEdit>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const auto window = [] {
        auto made = MessageWindow(QStringLiteral("frmAnnouncements"));
        made->Load();
        return made;
    }();
    auto* text = window->findChild<QPlainTextEdit*>(QStringLiteral("txtAnnouncement"));
    if (!text)
        std::abort();
    text->setPlainText(TextOf(data, size));
    text->grab();
    return 0;
}
