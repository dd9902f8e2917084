// Renders every window of the program to build/screenshots/<name>.png (or the
// folder given as the first argument), holes transparent, so that anyone can
// look at the skin. tools/screenshots.sh runs it under Xvfb.
#include "shell/frmIntro.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "delivery/frmUploadingTone.h"
#include "editing/frmAbout.h"
#include "editing/frmConfiguration.h"
#include "editing/frmMain.h"
#include "editing/frmZoomEdit.h"
#include "service/CSignUpManager.h"
#include "service/frmActivationCode.h"
#include "service/frmCheckPhoneEnabled.h"
#include "service/frmFreeQuills.h"
#include "service/frmLogin.h"
#include "service/frmSMSConfirmation.h"
#include "service/frmSignup1.h"
#include "service/frmSignup2.h"
#include "platform/AudioEditor2.h"
#include "skin/CClickLabel.h"
#include "skin/CDialog.h"
#include "skin/CPictureButton.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/frmMessage.h"
#include "support/SoundFiles.h"
#include "support/TestGround.h"

#include <QApplication>
#include <QBitmap>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QTextStream>
#include <functional>

namespace {
QString gFolder;

// The window as the desktop sees it: face where the mask keeps it, clear elsewhere.
void save(QWidget* window, const QString& name)
{
    QApplication::processEvents();
    QImage face = window->grab().toImage().convertToFormat(QImage::Format_ARGB32);
    if (!window->mask().isEmpty()) {
        QImage shaped(face.size(), QImage::Format_ARGB32);
        shaped.fill(Qt::transparent);
        QPainter p(&shaped);
        p.setClipRegion(window->mask());
        p.drawImage(0, 0, face);
        p.end();
        face = shaped;
    }
    const QString path = QDir(gFolder).filePath(name + QStringLiteral(".png"));
    QTextStream(stdout) << (face.save(path) ? "wrote " : "FAILED ") << path << '\n';
}

// Sample wording for the labels callers fill at run time.
void fillRunTimeText(CSkinWindow* window)
{
    if (QLabel* tooBig = window->Label(QStringLiteral("lblTooBig")))
        tooBig->setText(QStringLiteral("This tone is 212 Kb; your phone takes up to 100 Kb."));
    if (auto* news = window->findChild<QPlainTextEdit*>(QStringLiteral("txtAnnouncement")))
        news->setPlainText(QStringLiteral("Good news! Every new member gets three free quills this month. "
                                          "Tell your friends and get even more."));
}
}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    TestGround ground;
    gFolder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("build/screenshots");
    QDir().mkpath(gFolder);
    gstrChargeText = QStringLiteral("50p, added to your phone bill");

    {
        frmIntro& intro = IntroWindow();
        intro.Show(false);
        save(&intro, QStringLiteral("frmIntro"));
        intro.Button(QStringLiteral("imgOK"))->ShowOver();
        save(&intro, QStringLiteral("frmIntro-hover"));
        intro.Button(QStringLiteral("imgOK"))->ShowRest();
        intro.Button(QStringLiteral("imgClose"))->ShowOver();
        save(&intro, QStringLiteral("frmIntro-close-hover"));
        DropStartupWindows();
    }

    for (const QString& name : MessageWindowNames()) {
        auto window = MessageWindow(name);
        window->Load();
        fillRunTimeText(window.get());
        window->show();
        save(window.get(), name);
        // The first button lit, as under the mouse.
        if (CPictureButton* first = window->findChild<CPictureButton*>()) {
            first->ShowOver();
            save(window.get(), name + QStringLiteral("-hover"));
        }
        window->Unload();
    }

    {
        // The toolkit's other parts on one sample: fields, a link, and the busy picture.
        class frmSkinSample : public CSkinWindow {
        public:
            frmSkinSample() : CSkinWindow(QStringLiteral("frmSkinSample")) {}

        protected:
            void Form_Load() override
            {
                SkinWindowDesc desc;
                desc.size = QSize(420, 300);
                desc.heading = QStringLiteral("Sign in");
                desc.labels = {{QStringLiteral("lblMobile"), QRect(40, 122, 120, 24), LabelKind::Text,
                                QStringLiteral("Mobile number"), 10, false, int(Qt::AlignLeft | Qt::AlignVCenter)},
                               {QStringLiteral("lblPassword"), QRect(40, 160, 120, 24), LabelKind::Text,
                                QStringLiteral("Password"), 10, false, int(Qt::AlignLeft | Qt::AlignVCenter)},
                               {QStringLiteral("lblForgotten"), QRect(170, 196, 210, 20), LabelKind::Link,
                                QStringLiteral("Forgotten your password?"), 9, false,
                                int(Qt::AlignRight | Qt::AlignVCenter)}};
                desc.textBoxes = {{QStringLiteral("txtMobileNumber"), QRect(170, 118, 210, 30), false, false, true},
                                  {QStringLiteral("txtPassword"), QRect(170, 156, 210, 30)}};
                desc.buttons = {{QStringLiteral("imgOK"), QStringLiteral("Sign in")}};
                desc.talkingToServer = true;
                desc.closeMark = true;
                desc.minimizeMark = true;
                Build(desc);
                SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
            }
        } sample;
        sample.Show(false);
        save(&sample, QStringLiteral("skin-sample"));
        sample.Label(QStringLiteral("imgTalkingToServer"))->show();
        save(&sample, QStringLiteral("skin-sample-busy"));
    }
    {
        // The main window with a song loaded and a part marked, then in record mode.
        gintFreeQuills = 3;
        frmMain& main = MainForm();
        main.Load();
        main.show();
        save(&main, QStringLiteral("frmMain-empty"));
        main.LoadSoundFile(MakeTone(ground.tempFolder() + QStringLiteral("/Summer Song.mp3"), 95.0, 330));
        main.AudioEditor21->SetShowSelection(true);
        main.AudioEditor21->SetSelectionStart(44100 * 31);
        main.AudioEditor21->SetSelectionEnd(44100 * 51);
        main.AudioEditor21->SetPlayPosition(44100 * 36);
        save(&main, QStringLiteral("frmMain"));
        main.Button(QStringLiteral("cmdSend"))->ShowOver();
        save(&main, QStringLiteral("frmMain-hover"));
        main.Button(QStringLiteral("cmdSend"))->ShowRest();
        main.mbRecordMode = true;
        main.ApplyWindowMode();
        save(&main, QStringLiteral("frmMain-record"));
        main.mbRecordMode = false;
        main.ApplyWindowMode();

        frmZoomEdit zoom;
        zoom.Load();
        zoom.SetFile(main.mobjTone->mstrCurrentFile);
        zoom.show();
        while (!zoom.mbReady)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        zoom.AudioEditor21->SetSelectionStart(44100 * 40);
        zoom.AudioEditor21->SetSelectionEnd(44100 * 45);
        save(&zoom, QStringLiteral("frmZoomEdit"));
        zoom.Unload();

        frmUploadingTone& uploading = UploadingToneWindow(&main);
        uploading.Show(false);
        save(&uploading, QStringLiteral("frmUploadingTone"));
        DropMainForm();
    }
    {
        gstrMachineKey = QStringLiteral("3F2A9C0B7D1E4F6A8B5C2D9E0F1A3B4C");
        frmAbout about;
        about.Show(false);
        save(&about, QStringLiteral("frmAbout"));
        frmConfiguration settings;
        settings.Show(false);
        save(&settings, QStringLiteral("frmConfiguration"));
    }
    {
        frmLogin login;
        login.Show(false);
        login.findChild<QLineEdit*>(QStringLiteral("txtMobileNumber"))->setText(QStringLiteral("0412345678"));
        login.findChild<QLineEdit*>(QStringLiteral("txtPassword"))->setText(QStringLiteral("tonedemo"));
        save(&login, QStringLiteral("frmLogin"));
    }
    {
        // The sign-up road and the referral window, with sample entries where the service fills them.
        CSignUpManager road([](const QString&) { return false; });
        frmCheckPhoneEnabled& check = road.PhoneCheck();
        check.Show(false);
        check.imgYes->setPixmap(check.imgYesClicked->pixmap());
        save(&check, QStringLiteral("frmCheckPhoneEnabled"));
        frmSignup2& phone = road.PhoneDetails();
        phone.Show(false);
        for (auto [list, entry] : {std::pair{phone.cmbPhoneMake, "Nokia"}, std::pair{phone.cmbPhoneModel, "6230i"},
                                   std::pair{phone.cmbCountry, "Australia"}, std::pair{phone.cmbNetworkOperator, "Telstra"}}) {
            const QSignalBlocker quiet(list);
            list->addItem(QString::fromLatin1(entry));
        }
        save(&phone, QStringLiteral("frmSignup2"));
        road.ShowPersonalDetails();
        frmSignup1& form = road.PersonalDetails();
        form.txtFirstName->setText(QStringLiteral("Kim"));
        form.txtMobileNumber->setText(QStringLiteral("0412345678"));
        form.imgGalChecked->show();
        save(&form, QStringLiteral("frmSignup1"));
        frmActivationCode code;
        code.Show(false);
        save(&code, QStringLiteral("frmActivationCode"));
        frmSMSConfirmation sms;
        sms.Show(false);
        sms.lblPhoneNumber->setText(QStringLiteral("0412345678"));
        save(&sms, QStringLiteral("frmSMSConfirmation"));
        frmFreeQuills quills;
        quills.Show(false);
        quills.txtName[0]->setText(QStringLiteral("Bo"));
        quills.txtMobile[0]->setText(QStringLiteral("0412000111"));
        save(&quills, QStringLiteral("frmFreeQuills"));
    }
    {
        CDialog notice;
        notice.Display(QStringLiteral("Making your tone. Please wait (40% complete)"), false, nullptr);
        save(notice.Window(), QStringLiteral("frmGenericOKDialog-notice"));
        notice.HideForm();
    }
    {
        frmGenericOKDialog message;
        message.Load();
        message.Label(QStringLiteral("lblMessage"))
            ->setText(QStringLiteral("Send: the service could not be reached. Check your internet "
                                     "connection and try again."));
        message.show();
        save(&message, QStringLiteral("frmGenericOKDialog"));
        message.Label(QStringLiteral("picOKOver"))->show();
        save(&message, QStringLiteral("frmGenericOKDialog-hover"));
    }
    return 0;
}
