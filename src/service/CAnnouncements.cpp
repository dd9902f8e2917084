#include "service/CAnnouncements.h"

#include "core/modCommon.h"
#include "service/CHTTPCall.h"
#include "skin/frmMessage.h"

#include <QPlainTextEdit>

void CAnnouncements::CheckForAnnouncements()
{
    // Each call fetches the next unread text and marks it read; an empty
    // reply ends the series. "err" is shown like any text: closing its window
    // paces the next try.
    QString reply;
    do {
        QString query = BuildAccountQuery();
        CHTTPCall call;
        reply = call.GetPage(ptAnnouncementRead, query, true, kServiceTimeOut);
        SetMousePointer(vbDefault);
        if (!reply.isEmpty()) {
            ShowMessageWindow(QStringLiteral("frmAnnouncements"), [&reply](frmMessage& window) {
                window.findChild<QPlainTextEdit*>(QStringLiteral("txtAnnouncement"))->setPlainText(reply);
            });
        }
    } while (!reply.isEmpty());
}
