// The message windows with fixed wording: one row a window.
#include "skin/frmMessage.h"

namespace {
const QString OK = QStringLiteral("imgOK");
const QString Cancel = QStringLiteral("imgCancel");
const QString Q = QStringLiteral("Q");

MessageButton go(const QString& name, const QString& caption, const QString& tag = {})
{
    return {name, caption, tag, ButtonLook::Primary};
}

MessageButton back(const QString& name, const QString& caption, const QString& tag = {})
{
    return {name, caption, tag, ButtonLook::Secondary};
}

// A notice with one OK button that Enter and Esc both press.
MessageWindowRow notice(const QString& name, const QString& heading, const QString& body)
{
    MessageWindowRow row{name, heading, body, {go(OK, QStringLiteral("OK"))}, OK, OK};
    return row;
}

// A question: OK gives an empty Tag, Cancel "Q", and neither key answers.
MessageWindowRow question(const QString& name, const QString& heading, const QString& body,
                           const QString& okCaption, const QString& cancelCaption)
{
    return {name, heading, body, {go(OK, okCaption), back(Cancel, cancelCaption, Q)}, {}, {}};
}

MessageWindowRow onScreen(MessageWindowRow row)
{
    row.centredOnScreen = true;
    return row;
}

MessageWindowRow clickUnloads(MessageWindowRow row)
{
    row.clickUnloads = true;
    return row;
}

MessageWindowRow withKeys(MessageWindowRow row, const QString& enter, const QString& escape)
{
    row.enterButton = enter;
    row.escapeButton = escape;
    return row;
}

MessageWindowRow withLabel(MessageWindowRow row, const QString& name, int height, LabelKind kind = LabelKind::Text)
{
    row.size.rheight() += height;
    // Under the wording, above the button row.
    const int top = row.size.height() - 58 - height - 10;
    row.labels.append({name, QRect(28, top, row.size.width() - 56, height), kind, {}, 10.5, true});
    return row;
}

QList<MessageWindowRow> build()
{
    QList<MessageWindowRow> rows;
    rows << notice(QStringLiteral("frmNoToneSelected"), QStringLiteral("No music yet"),
                   QStringLiteral("There's no music in the editor yet. Press Open to pick a song file, "
                                  "or My Music to choose one from your library."));
    rows << notice(QStringLiteral("frmToneNotTrimmed"), QStringLiteral("Pick your part first"),
                   QStringLiteral("Select the part of the song you'd like as your tone: "
                                  "drag across the waveform to mark it."));
    rows << notice(QStringLiteral("frmStartRecording"), QStringLiteral("Get ready to record"),
                   QStringLiteral("Recording starts the moment you press OK, so have your music "
                                  "or microphone ready."));
    rows << notice(QStringLiteral("frmInsertCD"), QStringLiteral("No CD in the drive"),
                   QStringLiteral("There's no audio CD in the drive. Pop one in and try again."));
    rows << notice(QStringLiteral("frmNoSoundOutput"), QStringLiteral("No sound output"),
                   QStringLiteral("There's no sound output on this computer, so Quillotone can't play. "
                                  "Plug in speakers or headphones and try again."));
    rows << notice(QStringLiteral("frmInvalidFileFormat"), QStringLiteral("Can't open this file"),
                   QStringLiteral("Sorry, this file isn't in a format Quillotone can open. "
                                  "Try an MP3, WAV or WMA file."));
    MessageWindowRow freeDB = notice(
        QStringLiteral("frmFreeDBWrong"), QStringLiteral("Where track names come from"),
        QStringLiteral("Track names are looked up in FreeDB, a free music information service "
                       "filled in by music fans all over the world. Now and then a name may be "
                       "missing or not quite right."));
    freeDB.size = QSize(420, 250);
    rows << freeDB;
    rows << notice(QStringLiteral("frmPhoneNotCapable"), QStringLiteral("Your phone can't take tones"),
                   QStringLiteral("It looks like your phone can't receive our tones. Ask your mobile "
                                  "network about switching on GPRS and WAP."));
    rows << notice(QStringLiteral("frmTellUsAboutPhone"), QStringLiteral("Is your phone ready?"),
                   QStringLiteral("To receive your tones, your phone needs to be GPRS and WAP enabled."));
    rows << onScreen(notice(QStringLiteral("frmInvalidCaptchaCode"), QStringLiteral("That code didn't match"),
                            QStringLiteral("The code you typed doesn't match the one we showed you. "
                                           "Please have another go.")));
    rows << onScreen(notice(QStringLiteral("frmActivationCodeCancelled"), QStringLiteral("See you soon"),
                            QStringLiteral("No problem! Come back once the text message with your "
                                           "code has arrived.")));
    rows << clickUnloads(notice(QStringLiteral("frmSent"), QStringLiteral("Your tone is on its way!"),
                                QStringLiteral("We're sending it to your phone now. Look out for it "
                                               "in a moment.")));

    MessageWindowRow news = onScreen(clickUnloads(notice(QStringLiteral("frmAnnouncements"),
                                                          QStringLiteral("News from Quillotone"), {})));
    news.size = QSize(440, 300);
    news.textBoxes.append({QStringLiteral("txtAnnouncement"), QRect(28, 116, 384, 110), true, true});
    rows << news;

    rows << question(QStringLiteral("frmConfirmExit"), QStringLiteral("Leaving already?"),
                     QStringLiteral("Do you really want to exit Quillotone?"), QStringLiteral("Exit"),
                     QStringLiteral("Stay"));
    rows << question(QStringLiteral("frmConfirmSearch"), QStringLiteral("Find your music?"),
                     QStringLiteral("Quillotone can look through your computer for music and list it "
                                    "in My Music. Search now?"),
                     QStringLiteral("Search"), QStringLiteral("Not now"));
    rows << MessageWindowRow{QStringLiteral("frmConfirmDeleteTone"), QStringLiteral("Delete the waiting tone?"),
                              QStringLiteral("A tone is still waiting to be delivered. Is it OK to delete it?"),
                              {go(QStringLiteral("imgYes"), QStringLiteral("Yes, delete")),
                               back(QStringLiteral("imgNo"), QStringLiteral("No, keep it"), Q)},
                              {},
                              {}};
    rows << question(QStringLiteral("frmRecordDuringAudio"), QStringLiteral("Record over this audio?"),
                     QStringLiteral("Recording will replace the audio that's in the editor now. "
                                    "Are you sure?"),
                     QStringLiteral("Record"), QStringLiteral("Cancel"));
    // Here OK gives "Q": it stops the rip.
    rows << MessageWindowRow{QStringLiteral("frmCancelRip"), QStringLiteral("Stop copying?"),
                              QStringLiteral("Do you want to stop copying this track from the CD?"),
                              {go(OK, QStringLiteral("Yes, stop"), Q), back(Cancel, QStringLiteral("No, go on"))},
                              {},
                              {}};
    // Here OK gives "Q": it gives the tone up; Cancel sends it all the same.
    rows << withLabel(MessageWindowRow{QStringLiteral("frmToneTooBig"), QStringLiteral("This tone is too big"),
                                        QStringLiteral("Your tone is over the size limit, so it may not reach "
                                                       "your phone. Try a shorter part, or send it anyway."),
                                        {go(OK, QStringLiteral("Don't send"), Q),
                                         back(Cancel, QStringLiteral("Send anyway"))},
                                        {},
                                        {}},
                      QStringLiteral("lblTooBig"), 40, LabelKind::HotSpot);  // a click shows the size
    rows << withKeys(question(QStringLiteral("frmAboutToUseFreeQuill"), QStringLiteral("Use a free quill?"),
                              QStringLiteral("Sending this tone will use one of your free quills."),
                              QStringLiteral("Send it"), QStringLiteral("Cancel")),
                     OK, Cancel);
    // Both keys hide it with an empty Tag, which is what OK gives.
    rows << withKeys(withLabel(question(QStringLiteral("frmCharged"), QStringLiteral("This tone will be charged"),
                                        QStringLiteral("You have no free quills left, so you'll be charged "
                                                       "for this tone:"),
                                        QStringLiteral("Send it"), QStringLiteral("Cancel")),
                               QStringLiteral("lblCharge"), 40),
                     OK, OK);
    rows << MessageWindowRow{QStringLiteral("frmTonePending"), QStringLiteral("A tone is still on its way"),
                              QStringLiteral("Your last tone hasn't been collected yet. Wait for it, "
                                             "or delete it to make room for a new one."),
                              {go(OK, QStringLiteral("I'll wait")), back(QStringLiteral("imgDelete"),
                                                                         QStringLiteral("Delete it"), Q)},
                              OK,
                              OK};
    rows << withKeys(question(QStringLiteral("frmSMSPermission"), QStringLiteral("Invite your friend?"),
                              QStringLiteral("May we send your friend a text message inviting them "
                                             "to Quillotone?"),
                              QStringLiteral("Yes, send"), QStringLiteral("No thanks")),
                     OK, Cancel);
    MessageWindowRow wait{QStringLiteral("frmCCDBWait"), QStringLiteral("Looking up track names"),
                           QStringLiteral("Fetching the names of the tracks on your CD. "
                                          "This only takes a moment..."),
                           {},
                           {},
                           {}};
    wait.size = QSize(400, 200);
    rows << wait;
    return rows;
}
}  // namespace

const QList<MessageWindowRow>& MessageCatalogue()
{
    static const QList<MessageWindowRow> rows = build();
    return rows;
}
