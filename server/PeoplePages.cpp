#include "PeoplePages.h"

#include "Accounts.h"
#include "PasswordHash.h"
#include "Store.h"
#include "Text.h"

#include <httplib.h>

using namespace page;

PeoplePages::PeoplePages(Store& store, Accounts& accounts) : mStore(store), mAccounts(accounts) {}

void PeoplePages::Register(httplib::Server& server)
{
    const auto handler = [this](void (PeoplePages::*member)(const Request&, Response&)) {
        return Guarded([this, member](const Request& req, Response& res) { (this->*member)(req, res); });
    };
    server.Get("/", handler(&PeoplePages::Home));
    server.Get("/help.asp", handler(&PeoplePages::Help));
    server.Get("/password.asp", handler(&PeoplePages::PasswordForm));
    server.Post("/password.asp", handler(&PeoplePages::PasswordReset));
    server.Get("/outbox.asp", handler(&PeoplePages::OutboxPage));
}

void PeoplePages::Home(const Request&, Response& res)
{
    Html(res, "Quillo Tone",
         "<p>Make a ringtone out of music you own and send it to your own phone.</p>"
         "<p>Install the Quillo Tone program on your computer, sign up with your mobile number, "
         "pick a song, mark the part you like and press Send: the tone arrives on your phone as a "
         "text message with a link.</p><p>" +
             std::to_string(mStore.ToneCount()) + " tones delivered so far.</p>");
}

void PeoplePages::Help(const Request&, Response& res)
{
    Html(res, "Will my phone take Quillo Tones?",
         "<p>Your phone needs <b>GPRS</b> and <b>WAP</b> switched on with your network: the tone arrives as "
         "a text message with a link, and the phone fetches the tone from that link.</p>"
         "<p>Phones that play AMR, MP3 or WAV ringtones can use Quillo Tone. When you sign up you choose "
         "your phone's make and model, and we send every tone in the format that model plays best.</p>"
         "<p>If the link does not open, ask your network to set up GPRS and WAP on your phone, "
         "then press the link again.</p>");
}

void PeoplePages::PasswordForm(const Request&, Response& res)
{
    Html(res, "Forgotten your password?",
         "<p>Type your mobile number and we will send a new password to your phone.</p>"
         "<form method=\"post\" action=\"password.asp\"><input name=\"MobileNumber\" inputmode=\"numeric\"> "
         "<button type=\"submit\">Send me a new password</button></form>");
}

void PeoplePages::PasswordReset(const Request& req, Response& res)
{
    const std::string mobile = text::Trim(Get(req.params, "MobileNumber"));
    if (const auto customer = mStore.CustomerByMobile(mobile); customer && customer->activated) {
        const std::string fresh = password::Random(8);
        mStore.SetPassword(customer->id, password::MakeHash(fresh));
        mAccounts.ForgetLogin(mobile);
        mStore.AddOutbox(mobile, "Your new Quillo Tone password is " + fresh + ".");
    }
    // The same words either way, so the page tells nobody which numbers are customers.
    Html(res, "Forgotten your password?",
         "<p>If " + text::Html(mobile) +
             " belongs to a Quillo Tone account, a new password is on its way to that phone.</p>");
}

void PeoplePages::OutboxPage(const Request&, Response& res)
{
    std::string rows;
    for (const auto& m : mStore.Outbox(200))
        rows += "<tr><td>" + std::to_string(m.id) + "</td><td>" + text::Html(m.created) + "</td><td>" +
                text::Html(m.mobile) + "</td><td>" + text::Html(m.text) + "</td></tr>\n";
    Html(res, "Outbox",
         "<p>The text messages the service sends, newest first: this is what the phones receive.</p>"
         "<table><tr><th>#</th><th>Sent (UTC)</th><th>To</th><th>Message</th></tr>\n" + rows + "</table>");
}
