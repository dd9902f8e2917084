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
            std::unique_ptr<frmMessage> frmAnnouncements = MessageWindow(QStringLiteral("frmAnnouncements"));
            frmAnnouncements->Load();
            frmAnnouncements->findChild<QPlainTextEdit*>(QStringLiteral("txtAnnouncement"))->setPlainText(reply);
            frmAnnouncements->Show(true);
            frmAnnouncements->Unload();
        }
    } while (!reply.isEmpty());
}
