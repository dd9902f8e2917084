#include "PeoplePages.h"

#include "Accounts.h"
#include "PasswordHash.h"
#include "Store.h"
#include "Text.h"
#include "wire/Pages.h"

#include <httplib.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>

using namespace page;
using namespace std::chrono_literals;

namespace {
constexpr int kMessagesShown = 200;
constexpr int64_t kLinkLifetimeMs = 24 * 3600 * 1000;
constexpr int64_t kMaxLinks = 10000;

std::array<unsigned char, 32> Digest(const std::string& value)
{
    std::array<unsigned char, 32> out{};
    unsigned int length = 0;
    EVP_Digest(value.data(), value.size(), out.data(), &length, EVP_sha256(), nullptr);
    return out;
}

std::string MessageRows(const std::vector<OutboxMessage>& messages)
{
    std::string rows;
    for (const auto& m : messages)
        rows += "<tr><td>" + std::to_string(m.id) + "</td><td>" + text::Html(m.created) + "</td><td>" +
                text::Html(m.mobile) + "</td><td>" + text::Html(m.text) + "</td></tr>\n";
    return "<table><tr><th>#</th><th>Sent (UTC)</th><th>To</th><th>Message</th></tr>\n" + rows + "</table>";
}

const std::string kReadPhoneForm =
    std::string("<form method=\"post\" action=\"") + wire::kOutbox + "\"><p><label>Mobile number <input name=\"MobileNumber\" "
    "inputmode=\"numeric\"></label> <label>Password <input name=\"Password\" type=\"password\"></label> "
    "<button type=\"submit\">Read my messages</button></p></form>";
}  // namespace

PeoplePages::PeoplePages(Store& store, Accounts& accounts, const std::string& base)
    : mStore(store), mAccounts(accounts), mBase(base), mOperatorGuesses(store, "operator/address", 5, 1s, 15min)
{
}

void PeoplePages::SetOperatorKey(const std::string& key)
{
    mOperatorOn = !key.empty();
    std::string credentials = "operator:" + key;
    std::string encoded(4 * ((credentials.size() + 2) / 3) + 1, '\0');
    const int n = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                                  reinterpret_cast<const unsigned char*>(credentials.data()),
                                  static_cast<int>(credentials.size()));
    encoded.resize(static_cast<size_t>(n));
    mOperatorDigest = Digest("Basic " + encoded);
}

void PeoplePages::Register(httplib::Server& server)
{
    const auto handler = [this](void (PeoplePages::*member)(const Request&, Response&)) {
        return Guarded([this, member](const Request& req, Response& res) { (this->*member)(req, res); });
    };
    server.Get("/", handler(&PeoplePages::Home));
    server.Get(Route(wire::kHelp), handler(&PeoplePages::Help));
    server.Get(Route(wire::kPassword), handler(&PeoplePages::PasswordForm));
    server.Post(Route(wire::kPassword), handler(&PeoplePages::PasswordReset));
    server.Get(Route(wire::kOutbox), handler(&PeoplePages::OutboxForm));
    server.Post(Route(wire::kOutbox), handler(&PeoplePages::OutboxOfOwner));
    server.Get(Route(wire::kOperator), handler(&PeoplePages::OperatorView));
    server.Post(Route(wire::kOperator), handler(&PeoplePages::OperatorLink));
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
         std::string("<p>Type your mobile number and we will send a one-time code to your phone. With that code "
                     "you choose a new password.</p><form method=\"post\" action=\"") +
             wire::kPassword +
             "\"><input name=\"MobileNumber\" inputmode=\"numeric\"> "
             "<button type=\"submit\">Send me a code</button></form>");
}

void PeoplePages::PasswordReset(const Request& req, Response& res)
{
    const std::string mobile = text::Trim(Get(req.params, "MobileNumber"));
    if (!Has(req.params, "Code")) {
        mAccounts.StartReset(mobile, req.remote_addr);
        // The same words either way, so the page tells nobody which numbers are customers.
        Html(res, "Choose a new password",
             "<p>If " + text::Html(mobile) +
                 " belongs to a Quillo Tone account, a one-time code is on its way to that phone.</p>"
                 "<form method=\"post\" action=\"" + wire::kPassword +
                 "\"><input type=\"hidden\" name=\"MobileNumber\" value=\"" +
                 text::Html(mobile) +
                 "\"><p><label>Code <input name=\"Code\"></label></p>"
                 "<p><label>New password <input name=\"Password\" type=\"password\"></label></p>"
                 "<p><label>New password again <input name=\"ConfirmPassword\" type=\"password\"></label></p>"
                 "<button type=\"submit\">Change my password</button></form>");
        return;
    }
    const std::string fresh = Get(req.params, "Password");
    if (fresh != GetOr(req.params, "ConfirmPassword") || !Accounts::PasswordRefusal(fresh).empty()) {
        Html(res, "Choose a new password",
             "<p>The two passwords must be the same, at least 6 characters long, with no spaces and none of "
             "&amp; = % + # ?, in Western European letters. Please go back and type them again.</p>");
        return;
    }
    if (!mAccounts.FinishReset(mobile, text::Trim(Get(req.params, "Code")), fresh, req.remote_addr)) {
        Html(res, "Choose a new password",
             std::string("<p>That code is wrong, used or too old. <a href=\"") + wire::kPassword +
                 "\">Ask for a new one</a>.</p>");
        return;
    }
    Html(res, "Your password is changed", "<p>Sign in to Quillo Tone with your new password.</p>");
}

void PeoplePages::ShowPhone(Response& res, const std::string& mobile)
{
    Html(res, "Messages to " + mobile,
         "<p>The text messages the service sent to this phone, newest first.</p>" +
             MessageRows(mStore.OutboxOf(mobile, kMessagesShown)));
}

void PeoplePages::OutboxForm(const Request& req, Response& res)
{
    const std::string token = GetOr(req.params, "link");
    if (token.empty()) {
        Html(res, "Your phone's messages",
             std::string("<p>The text messages the service sends stand here for each phone. Sign in with "
                         "your mobile number and the password of your account to read yours.</p>") +
                 kReadPhoneForm);
        return;
    }
    const auto mobile = mStore.TakeLink(token, Store::NowMs());
    if (!mobile) {
        res.status = 403;
        Html(res, "Your phone's messages", "<p>This link was used already or is too old.</p>");
        return;
    }
    ShowPhone(res, *mobile);
}

void PeoplePages::OutboxOfOwner(const Request& req, Response& res)
{
    const std::string mobile = text::Trim(Get(req.params, "MobileNumber"));
    if (!mAccounts.Owner(mobile, Get(req.params, "Password"), req.remote_addr)) {
        res.status = 403;
        Html(res, "Your phone's messages",
             std::string("<p>Invalid mobile number or password.</p>") + kReadPhoneForm);
        return;
    }
    ShowPhone(res, mobile);
}

bool PeoplePages::IsOperator(const Request& req, Response& res)
{
    if (!mOperatorOn) {
        res.status = 404;
        Reply(res, "No such page");
        return false;
    }
    const auto given = Digest(req.get_header_value("Authorization"));
    if (!mOperatorGuesses.Blocked(req.remote_addr) &&
        CRYPTO_memcmp(given.data(), mOperatorDigest.data(), given.size()) == 0)
        return true;
    if (req.has_header("Authorization"))
        mOperatorGuesses.Count(req.remote_addr);
    res.status = 401;
    res.set_header("WWW-Authenticate", "Basic realm=\"Quillo Tone operator\", charset=\"UTF-8\"");
    Reply(res, "The operator's key is needed");
    return false;
}

void PeoplePages::OperatorView(const Request& req, Response& res)
{
    if (!IsOperator(req, res))
        return;
    Html(res, "Outbox",
         std::string("<p>The text messages the service sends, newest first: this is what the phones "
                     "receive.</p><form method=\"post\" action=\"") +
             wire::kOperator + "\"><p>A one-time link to one phone's messages, for its owner: "
         "<input name=\"MobileNumber\" inputmode=\"numeric\"> <button type=\"submit\">Make the link</button>"
         "</p></form>\n" +
             MessageRows(mStore.Outbox(kMessagesShown)));
}

void PeoplePages::OperatorLink(const Request& req, Response& res)
{
    if (!IsOperator(req, res))
        return;
    const std::string mobile = text::Trim(Get(req.params, "MobileNumber"));
    if (!text::IsDigits(mobile))
        throw BadRequest{"Field MobileNumber is not a number"};
    const std::string token = password::RandomHex(16);
    const int64_t now = Store::NowMs();
    if (!mStore.AddLink(token, mobile, now + kLinkLifetimeMs, now, kMaxLinks)) {
        res.status = 503;
        Reply(res, "Too many links are open");
        return;
    }
    const std::string link = mBase + wire::kOutbox + "?link=" + token;
    Html(res, "One-time link",
         "<p>Give this link to the owner of " + text::Html(mobile) +
             ". It shows that phone's messages once, within a day.</p><p><a href=\"" + text::Html(link) + "\">" +
             text::Html(link) + "</a></p>");
}
