#include "Pages.h"

#include "CodePicture.h"
#include "PasswordHash.h"
#include "Text.h"
#include "wire/ToneUpload.h"

#include <QString>
#include <QXmlStreamReader>
#include <httplib.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

namespace {
constexpr int kFreeQuillsAtSignUp = 3;
constexpr int64_t kMaxReferrals = 10;
using wire::kToneFieldChars;
constexpr size_t kMaxToneBytes = 1000000;
constexpr size_t kMaxUploadBody = 4 * 1024 * 1024;
// The tone's fields, the account's and the record, and a few to spare.
constexpr size_t kMaxUploadFields = kMaxToneBytes * 2 / kToneFieldChars + 1 + 16;
constexpr size_t kMaxCodeLength = 32;
const char* const kDefaultFormat = "AMR Narrowband";

// A request the service will not read: missing or malformed fields.
struct BadRequest {
    std::string message;
};

using Params = std::multimap<std::string, std::string>;

bool Has(const Params& params, const std::string& key)
{
    return params.find(key) != params.end();
}

std::string Get(const Params& params, const std::string& key)
{
    const auto it = params.find(key);
    if (it == params.end())
        throw BadRequest{"Missing field " + key};
    return text::FromWire(it->second);
}

std::string GetOr(const Params& params, const std::string& key)
{
    return Has(params, key) ? Get(params, key) : std::string();
}

int64_t Number(const Params& params, const std::string& key)
{
    const std::string value = text::Trim(Get(params, key));
    if (!text::IsDigits(value) || value.size() > 15)
        throw BadRequest{"Field " + key + " is not a number"};
    return std::stoll(value);
}

void Reply(httplib::Response& res, const std::string& utf8)
{
    res.set_content(text::ToWire(utf8), "text/plain; charset=windows-1252");
}

void Page(httplib::Response& res, const std::string& title, const std::string& body)
{
    res.set_content("<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>" + text::Html(title) +
                        "</title><style>body{font-family:sans-serif;max-width:50em;margin:2em auto;color:#223}"
                        "table{border-collapse:collapse}td,th{border:1px solid #ccd;padding:.3em .6em;"
                        "text-align:left;vertical-align:top}</style></head><body><h1>" +
                        text::Html(title) + "</h1>\n" + body +
                        "\n<p><a href=\"./\">Quillo Tone</a> &middot; <a href=\"help.asp\">Help</a> &middot; "
                        "<a href=\"password.asp\">Forgotten password</a> &middot; <a href=\"outbox.asp\">Outbox</a>"
                        "</p></body></html>\n",
                    "text/html; charset=utf-8");
}

// The number as a friend abroad would dial it: "+", the country code, the
// national number without its leading zeros.
std::string International(const std::string& dialCode, const std::string& mobile)
{
    const auto first = mobile.find_first_not_of('0');
    return "+" + dialCode + (first == std::string::npos ? std::string() : mobile.substr(first));
}

std::string RandomCode()
{
    unsigned char bytes[2];
    RAND_bytes(bytes, sizeof bytes);
    return std::to_string(1000 + (bytes[0] * 256 + bytes[1]) % 9000);
}

std::array<unsigned char, 32> Digest(const std::array<unsigned char, 32>& pepper, const std::string& plain)
{
    std::array<unsigned char, 32> out{};
    std::string input(reinterpret_cast<const char*>(pepper.data()), pepper.size());
    input += plain;
    unsigned int length = 0;
    EVP_Digest(input.data(), input.size(), out.data(), &length, EVP_sha256(), nullptr);
    return out;
}

int HexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Tone formats the program sends: content type -> file extension.
const std::map<std::string, std::string>& ToneTypes()
{
    static const std::map<std::string, std::string> types = {
        {"audio/wav", "wav"}, {"audio/amr-wb", "amr"}, {"audio/amr", "amr"},
        {"audio/mpeg", "mp3"}, {"audio/aac", "aac"},   {"audio/qcelp", "qcp"}};
    return types;
}

struct ToneRecord {
    std::string contentType, filename, mobileNumber;
};

// The attributes of the one empty element "Message" that a tone record is.
std::optional<ToneRecord> ReadToneRecord(const std::string& xml)
{
    QXmlStreamReader reader(QString::fromStdString(xml));
    if (!reader.readNextStartElement() || reader.name() != QLatin1String("Message"))
        return std::nullopt;
    const auto attributes = reader.attributes();
    ToneRecord record{attributes.value(QLatin1String("ContentType")).toString().toStdString(),
                      attributes.value(QLatin1String("Filename")).toString().toStdString(),
                      attributes.value(QLatin1String("MobileNumber")).toString().toStdString()};
    reader.skipCurrentElement();
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError())
        return std::nullopt;
    return record;
}

std::string Extension(const std::string& filename)
{
    const auto dot = filename.rfind('.');
    return dot == std::string::npos ? std::string() : filename.substr(dot + 1);
}
}  // namespace

Pages::Pages(Store& store, std::string dataFolder)
    : mStore(store), mToneFolder(std::move(dataFolder) + "/tones")
{
    std::filesystem::create_directories(mToneFolder);
    RAND_bytes(mPepper.data(), static_cast<int>(mPepper.size()));
}

std::optional<Customer> Pages::Authenticate(const std::string& mobile, const std::string& plainPassword)
{
    auto customer = mStore.CustomerByMobile(mobile);
    if (!customer || !customer->activated)
        return std::nullopt;
    const auto digest = Digest(mPepper, plainPassword);
    {
        std::lock_guard lock(mLoginsMutex);
        const auto it = mLogins.find(mobile);
        if (it != mLogins.end() && it->second.first == customer->passwordHash)
            return CRYPTO_memcmp(it->second.second.data(), digest.data(), digest.size()) == 0
                       ? customer
                       : std::nullopt;
    }
    if (!password::Matches(plainPassword, customer->passwordHash))
        return std::nullopt;
    std::lock_guard lock(mLoginsMutex);
    mLogins[mobile] = {customer->passwordHash, digest};
    return customer;
}

void Pages::ForgetLogin(const std::string& mobile)
{
    std::lock_guard lock(mLoginsMutex);
    mLogins.erase(mobile);
}

void Pages::EnsureDemoAccount(const std::string& mobile, const std::string& plainPassword)
{
    if (auto existing = mStore.CustomerByMobile(mobile)) {
        if (!password::Matches(plainPassword, existing->passwordHash))
            mStore.SetPassword(existing->id, password::MakeHash(plainPassword));
        if (!existing->activated)
            mStore.Activate(existing->id, existing->activationCode, "Welcome back to Quillo Tone!");
        return;
    }
    const auto provider = mStore.Providers(1).front();
    const auto country = mStore.CountryById(provider.countryId);
    Customer c;
    c.mobile = mobile;
    c.firstName = "Demo";
    c.lastName = "User";
    c.gender = "female";
    c.email = "demo@example.com";
    c.passwordHash = password::MakeHash(plainPassword);
    c.age = 30;
    c.countryId = provider.countryId;
    c.providerId = provider.id;
    c.vendorId = 1;
    c.modelId = mStore.Models(1).front().id;
    c.preferredFormat = mStore.ModelById(c.modelId)->format;
    c.chargeText = country->chargeText;
    c.freeQuills = 5;
    c.activationCode = RandomCode();
    const auto id = mStore.AddCustomer(c);
    mStore.Activate(*id, c.activationCode,
                    "Welcome to Quillo Tone!\r\nThis is the demo account: it has 5 free quills to try.\r\n"
                    "Every tone you send shows up in the service's outbox.");
}

void Pages::Register(httplib::Server& server)
{
    using Handler = void (Pages::*)(const Request&, Response&);
    const auto wrap = [this](Handler handler) {
        return [this, handler](const Request& req, Response& res) {
            try {
                (this->*handler)(req, res);
            } catch (const BadRequest& bad) {
                res.status = 400;
                Reply(res, bad.message);
            }
        };
    };
    server.Get("/GetCountryList.asp", wrap(&Pages::CountryList));
    server.Get("/GetTerminalVendorList.asp", wrap(&Pages::VendorList));
    server.Get("/GetTerminalTypeList.asp", wrap(&Pages::ModelList));
    server.Get("/GetServiceProviderList.asp", wrap(&Pages::ProviderList));
    server.Get("/Login.asp", wrap(&Pages::Login));
    server.Get("/AddCustomer.asp", wrap(&Pages::AddCustomer));
    server.Get("/ActivateCustomer.asp", wrap(&Pages::ActivateCustomer));
    server.Get("/ReferFriends.asp", wrap(&Pages::ReferFriends));
    server.Get("/PostSongData.asp", wrap(&Pages::PostSongData));
    server.Get("/LookupMobileNumber.asp", wrap(&Pages::LookupMobileNumber));
    server.Get("/Send.asp", wrap(&Pages::Send));
    server.Get("/AnnouncementRead.asp", wrap(&Pages::AnnouncementRead));
    server.Get("/UpdateTID.asp", wrap(&Pages::UpdateTID));
    server.Get("/DeleteTID.asp", wrap(&Pages::DeleteTID));
    server.Get("/CheckVersion.asp", wrap(&Pages::CheckVersion));
    server.Get("/qtc/JpegImage.aspx", wrap(&Pages::CodePicture));
    server.Get(R"(/tones/([0-9a-f]{32}))", wrap(&Pages::DownloadTone));
    server.Get("/", wrap(&Pages::Home));
    server.Get("/help.asp", wrap(&Pages::Help));
    server.Get("/password.asp", wrap(&Pages::PasswordForm));
    server.Post("/password.asp", wrap(&Pages::PasswordReset));
    server.Get("/outbox.asp", wrap(&Pages::OutboxPage));
    // The upload body is read here rather than by the library, whose own
    // form reader stops at a few kilobytes.
    server.Post("/SendT2.asp", [this](const Request& req, Response& res, const httplib::ContentReader& reader) {
        std::string body;
        body.reserve(std::min(kMaxUploadBody, static_cast<size_t>(req.get_header_value<uint64_t>("Content-Length"))));
        bool tooBig = false;
        reader([&](const char* data, size_t length) {
            if (body.size() + length > kMaxUploadBody) {
                tooBig = true;
                return false;
            }
            body.append(data, length);
            return true;
        });
        if (tooBig) {
            res.status = 413;
            Reply(res, "The upload is too large");
            return;
        }
        try {
            UploadTone(req, res, body);
        } catch (const BadRequest& bad) {
            res.status = 400;
            Reply(res, bad.message);
        }
    });
    server.set_payload_max_length(kMaxUploadBody);
    server.set_error_handler([](const Request&, Response& res) {
        if (res.body.empty())
            Reply(res, res.status == 404 ? "No such page" : "The request could not be served");
    });
    server.set_exception_handler([](const Request&, Response& res, std::exception_ptr) {
        res.status = 500;
        Reply(res, "The service could not do that just now. Please try again.");
    });
}

void Pages::CountryList(const Request&, Response& res)
{
    std::string out;
    for (const auto& c : mStore.Countries())
        out += std::to_string(c.id) + "," + text::Field(c.name) + ",";
    Reply(res, out);
}

void Pages::VendorList(const Request&, Response& res)
{
    std::string out;
    for (const auto& v : mStore.Vendors())
        out += std::to_string(v.id) + "," + text::Field(v.name) + ",";
    Reply(res, out);
}

void Pages::ModelList(const Request& req, Response& res)
{
    std::string out;
    for (const auto& m : mStore.Models(Number(req.params, "TerminalVendorID")))
        out += std::to_string(m.id) + "," + text::Field(m.name) + ",";
    Reply(res, out);
}

void Pages::ProviderList(const Request& req, Response& res)
{
    std::optional<int64_t> country;
    if (!text::Trim(GetOr(req.params, "CountryID")).empty())
        country = Number(req.params, "CountryID");
    std::string out;
    for (const auto& p : mStore.Providers(country))
        out += std::to_string(p.id) + "," + text::Field(p.name) + "," + text::Field(p.prefix) + "," +
               std::to_string(p.minLength) + "," + std::to_string(p.maxLength) + ",";
    Reply(res, out);
}

void Pages::Login(const Request& req, Response& res)
{
    const auto customer = Authenticate(Get(req.params, "MobileNumber"), Get(req.params, "Password"));
    if (!customer) {
        Reply(res, "0");
        return;
    }
    const Customer& c = *customer;
    Reply(res, "1," + std::to_string(c.id) + "," + text::Field(c.firstName) + "," + text::Field(c.lastName) + "," +
                   std::to_string(c.countryId) + "," + std::to_string(c.providerId) + "," +
                   std::to_string(c.vendorId) + "," + std::to_string(c.freeQuills) + "," +
                   std::to_string(c.modelId) + "," + text::Field(c.preferredFormat) + "," +
                   text::Field(c.chargeText));
}

void Pages::AddCustomer(const Request& req, Response& res)
{
    const auto& p = req.params;
    Customer c;
    c.firstName = text::Trim(Get(p, "FirstName"));
    c.lastName = text::Trim(Get(p, "LastName"));
    c.gender = Get(p, "gender");
    c.mobile = text::Trim(Get(p, "MobileNumber"));
    c.email = text::Trim(Get(p, "Email"));
    const std::string plainPassword = Get(p, "Password");
    c.age = Number(p, "Age");
    c.countryId = Number(p, "CountryID");
    c.vendorId = Number(p, "TerminalVendorID");
    c.modelId = Number(p, "TerminalTypeID");
    c.providerId = Number(p, "ServiceProviderID");
    c.receiveMarketing = Get(p, "ReceiveMarketing") == "1";
    c.partnerId = GetOr(p, "PartnerID");

    const auto country = mStore.CountryById(c.countryId);
    const auto provider = mStore.ProviderById(c.providerId);
    const auto model = mStore.ModelById(c.modelId);
    std::string refusal;
    if (c.firstName.empty() || c.lastName.empty())
        refusal = "Please give a first and a last name";
    else if (c.gender != "male" && c.gender != "female")
        refusal = "Please give a gender";
    else if (c.email.find('@') == std::string::npos || c.email.find('.') == std::string::npos)
        refusal = "Please give a valid email address";
    else if (plainPassword.size() < 6)
        refusal = "The password should be at least 6 characters long";
    else if (!country || !provider || provider->countryId != c.countryId)
        refusal = "Unknown country or network";
    else if (!model || model->vendorId != c.vendorId)
        refusal = "Unknown phone";
    else if (!text::IsDigits(c.mobile) || c.mobile.rfind(provider->prefix, 0) != 0 ||
             static_cast<int64_t>(c.mobile.size()) < provider->minLength ||
             static_cast<int64_t>(c.mobile.size()) > provider->maxLength)
        refusal = "Not a valid " + provider->name + " number";
    if (!refusal.empty()) {
        Reply(res, "0," + text::Field(refusal));
        return;
    }
    c.passwordHash = password::MakeHash(plainPassword);
    c.activationCode = RandomCode();
    c.freeQuills = kFreeQuillsAtSignUp;
    c.preferredFormat = model->format;
    c.chargeText = country->chargeText;
    const auto id = mStore.AddCustomer(c);
    if (!id) {
        Reply(res, "0,The mobile number is already in use");
        return;
    }
    ForgetLogin(c.mobile);
    mStore.AddOutbox(c.mobile, "Quillo Tone: your confirmation code is " + c.activationCode + ".");
    Reply(res, "1," + std::to_string(*id) + "," + c.activationCode);
}

void Pages::ActivateCustomer(const Request& req, Response& res)
{
    const int64_t id = Number(req.params, "CustomerID");
    const std::string code = text::Trim(Get(req.params, "ActivationCode"));
    const auto customer = mStore.CustomerById(id);
    const std::string welcome =
        "Welcome to Quillo Tone" + (customer ? ", " + customer->firstName : std::string()) + "!\r\n" + "Your first " +
        std::to_string(kFreeQuillsAtSignUp) + " tones are on us: each one uses a free quill.\r\n" +
        "Refer your friends to earn more.";
    Reply(res, customer && mStore.Activate(id, code, welcome) ? "1" : "0");
}

void Pages::ReferFriends(const Request& req, Response& res)
{
    const auto referrer = mStore.CustomerById(Number(req.params, "refCustomerID"));
    if (!referrer || !referrer->activated)
        throw BadRequest{"Unknown customer"};
    struct Friend {
        std::string name, mobile;
    };
    std::vector<Friend> friends;
    for (int i = 1; i <= 4; ++i) {
        const std::string n = std::to_string(i);
        if (!Has(req.params, "FirstName" + n))
            continue;
        Friend f{text::Trim(Get(req.params, "FirstName" + n)), text::Trim(Get(req.params, "MobileNumber" + n))};
        if (f.name.empty() || !text::IsDigits(f.mobile))
            throw BadRequest{"Friend " + n + " needs a name and a mobile number"};
        friends.push_back(std::move(f));
    }
    if (friends.empty())
        throw BadRequest{"No friends given"};
    if (mStore.ReferralCount(referrer->id) + static_cast<int64_t>(friends.size()) > kMaxReferrals) {
        Reply(res, "No more referrals available");
        return;
    }
    const auto country = mStore.CountryById(referrer->countryId);
    const std::string dialCode = country ? country->dialCode : std::string();
    for (const auto& f : friends) {
        const auto known = mStore.CustomerByMobile(f.mobile);
        if (known && known->activated) {
            Reply(res, "The number " + International(dialCode, f.mobile) + " is already in system");
            return;
        }
    }
    std::string out;
    for (const auto& f : friends) {
        const bool before = mStore.WasReferred(f.mobile);
        mStore.AddReferral(referrer->id, f.name, f.mobile);
        mStore.AddOutbox(f.mobile, "Hi " + f.name + ", " + referrer->firstName +
                                       " thinks you'd like Quillo Tone: ringtones made from your own music. "
                                       "Get it at " + mBase);
        out += std::string(before ? "0" : "1") + "," + text::Field(f.name) + "," + f.mobile + "\r\n";
    }
    Reply(res, out);
}

void Pages::PostSongData(const Request& req, Response& res)
{
    mStore.AddSongReport(Get(req.params, "CID"), Get(req.params, "SongBlob"));
    Reply(res, "1");
}

void Pages::LookupMobileNumber(const Request& req, Response& res)
{
    const auto customer = mStore.CustomerByMobile(text::Trim(Get(req.params, "MobileNumber")));
    Reply(res, customer && customer->activated ? "1" : "0");
}

void Pages::Send(const Request& req, Response& res)
{
    const auto customer = Authenticate(Get(req.params, "MobileNumber"), Get(req.params, "Password"));
    const int64_t toneId = Number(req.params, "ToneID");
    if (!customer) {
        Reply(res, "0,1,Invalid mobile number or password");
        return;
    }
    const auto tone = mStore.ToneById(customer->id, toneId);
    if (!tone) {
        Reply(res, "0,4,No such tone");
        return;
    }
    mStore.AddOutbox(customer->mobile, "Your Quillo Tone is ready: " + ToneLink(tone->token));
    Reply(res, "1," + std::to_string(tone->id) + "," + ToneLink(tone->token));
}

void Pages::AnnouncementRead(const Request& req, Response& res)
{
    const auto customer = Authenticate(Get(req.params, "MobileNumber"), Get(req.params, "Password"));
    Reply(res, customer ? mStore.TakeAnnouncement(customer->id).value_or(std::string()) : std::string());
}

void Pages::UpdateTID(const Request& req, Response& res)
{
    const auto customer = Authenticate(Get(req.params, "MobileNumber"), Get(req.params, "Password"));
    const auto model = mStore.ModelById(Number(req.params, "TerminalTypeID"));
    if (!customer || !model) {
        Reply(res, "0");
        return;
    }
    mStore.SetModel(customer->id, model->id, model->format);
    Reply(res, "1");
}

void Pages::DeleteTID(const Request& req, Response& res)
{
    const auto customer = Authenticate(Get(req.params, "MobileNumber"), Get(req.params, "Password"));
    if (!customer) {
        Reply(res, "0");
        return;
    }
    mStore.SetModel(customer->id, 0, kDefaultFormat);
    Reply(res, "1");
}

void Pages::CheckVersion(const Request& req, Response& res)
{
    // Every released version is still served; the page answers "1" for any
    // version written as major.minor.revision.
    std::istringstream in(Get(req.params, "Version"));
    std::string part;
    int parts = 0;
    while (std::getline(in, part, '.')) {
        if (!text::IsDigits(part))
            throw BadRequest{"Version is not major.minor.revision"};
        ++parts;
    }
    if (parts != 3)
        throw BadRequest{"Version is not major.minor.revision"};
    Reply(res, "1");
}

void Pages::UploadTone(const Request&, Response& res, std::string_view body)
{
    // The tone fields are hexadecimal and need no decoding; they are read in
    // place, since they make up nearly all of the body.
    httplib::Params params;
    std::map<size_t, std::string_view> toneFields;
    for (size_t count = 0; !body.empty(); ++count) {
        if (count == kMaxUploadFields) {
            Reply(res, "0,3,The upload has too many fields");
            return;
        }
        const auto amp = body.find('&');
        const std::string_view pair = body.substr(0, amp);
        body = amp == std::string_view::npos ? std::string_view() : body.substr(amp + 1);
        const auto eq = pair.find('=');
        const std::string_view key = pair.substr(0, eq);
        const std::string_view value = eq == std::string_view::npos ? std::string_view() : pair.substr(eq + 1);
        if (key.substr(0, 8) == "tonedata") {
            const std::string number(key.substr(8));
            if (!text::IsDigits(number) || number.size() > 4 || !toneFields.emplace(std::stoul(number), value).second)
                throw BadRequest{"Malformed field " + std::string(key.substr(0, 16))};
        } else {
            params.emplace(httplib::detail::decode_url(std::string(key), true),
                           httplib::detail::decode_url(std::string(value), true));
        }
    }
    const std::string mobile = Get(params, "MobileNumber");
    const auto customer = Authenticate(mobile, Get(params, "Password"));
    const auto record = ReadToneRecord(Get(params, "xmldata"));
    if (!customer) {
        Reply(res, "0,1,Invalid mobile number or password");
        return;
    }
    const auto type = record ? ToneTypes().find(record->contentType) : ToneTypes().end();
    if (!record || type == ToneTypes().end() || record->mobileNumber != mobile ||
        record->filename.find_first_of("/\\") != std::string::npos || Extension(record->filename) != type->second) {
        Reply(res, "0,2,The tone record does not describe a tone");
        return;
    }

    // tonedata1, tonedata2, ... in order of N; all but the last are full.
    std::string tone;
    size_t n = 0;
    for (const auto& [number, hex] : toneFields) {
        ++n;
        if (number != n)
            throw BadRequest{"Missing field tonedata" + std::to_string(n)};
        if ((n < toneFields.size() && hex.size() != kToneFieldChars) || hex.size() % 2 != 0)
            throw BadRequest{"Field tonedata" + std::to_string(n) + " is cut short"};
        if (tone.size() + hex.size() / 2 > kMaxToneBytes)
            break;
        const size_t at = tone.size();
        tone.resize(at + hex.size() / 2);
        for (size_t i = 0; i < hex.size(); i += 2) {
            const int hi = HexValue(hex[i]);
            const int lo = HexValue(hex[i + 1]);
            if (hi < 0 || lo < 0)
                throw BadRequest{"Field tonedata" + std::to_string(n) + " is not hexadecimal"};
            tone[at + i / 2] = static_cast<char>(hi * 16 + lo);
        }
    }
    if (tone.empty()) {
        Reply(res, "0,3,The tone is empty");
        return;
    }
    if (n < toneFields.size()) {
        Reply(res, "0,3,The tone is too large for a phone");
        return;
    }

    Tone stored;
    stored.customerId = customer->id;
    stored.token = password::RandomHex(16);
    stored.contentType = record->contentType;
    stored.filename = record->filename;
    stored.size = static_cast<int64_t>(tone.size());
    stored.path = mToneFolder + "/" + stored.token + "." + type->second;
    {
        const std::string partial = stored.path + ".part";
        std::ofstream out(partial, std::ios::binary | std::ios::trunc);
        out.write(tone.data(), static_cast<std::streamsize>(tone.size()));
        out.close();
        if (!out)
            throw std::runtime_error("cannot store the tone");
        std::filesystem::rename(partial, stored.path);
    }
    const std::string link = ToneLink(stored.token);
    const int64_t id = mStore.AddTone(stored, customer->mobile, "Your Quillo Tone is ready: " + link);
    Reply(res, "1," + std::to_string(id) + "," + link);
}

void Pages::DownloadTone(const Request& req, Response& res)
{
    const auto tone = mStore.ToneByToken(req.matches[1]);
    std::ifstream in(tone ? tone->path : std::string(), std::ios::binary);
    if (!tone || !in) {
        res.status = 404;
        Reply(res, "No such tone");
        return;
    }
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    res.set_header("Content-Disposition", "inline; filename=\"" + tone->filename + "\"");
    res.set_content(std::move(bytes), tone->contentType.c_str());
}

void Pages::CodePicture(const Request& req, Response& res)
{
    // The whole query is the code.
    const auto mark = req.target.find('?');
    const std::string code =
        mark == std::string::npos ? std::string() : httplib::detail::decode_url(req.target.substr(mark + 1), true);
    if (code.empty() || code.size() > kMaxCodeLength)
        throw BadRequest{"The code must have 1 to 32 characters"};
    for (const char c : code) {
        if (c < 0x21 || c > 0x7E)
            throw BadRequest{"The code must be printable"};
    }
    res.set_content(CodePictureJpeg(code), "image/jpeg");
}

void Pages::Home(const Request&, Response& res)
{
    Page(res, "Quillo Tone",
         "<p>Make a ringtone out of music you own and send it to your own phone.</p>"
         "<p>Install the Quillo Tone program on your computer, sign up with your mobile number, "
         "pick a song, mark the part you like and press Send: the tone arrives on your phone as a "
         "text message with a link.</p><p>" +
             std::to_string(mStore.ToneCount()) + " tones delivered so far.</p>");
}

void Pages::Help(const Request&, Response& res)
{
    Page(res, "Will my phone take Quillo Tones?",
         "<p>Your phone needs <b>GPRS</b> and <b>WAP</b> switched on with your network: the tone arrives as "
         "a text message with a link, and the phone fetches the tone from that link.</p>"
         "<p>Phones that play AMR, MP3 or WAV ringtones can use Quillo Tone. When you sign up you choose "
         "your phone's make and model, and we send every tone in the format that model plays best.</p>"
         "<p>If the link does not open, ask your network to set up GPRS and WAP on your phone, "
         "then press the link again.</p>");
}

void Pages::PasswordForm(const Request&, Response& res)
{
    Page(res, "Forgotten your password?",
         "<p>Type your mobile number and we will send a new password to your phone.</p>"
         "<form method=\"post\" action=\"password.asp\"><input name=\"MobileNumber\" inputmode=\"numeric\"> "
         "<button type=\"submit\">Send me a new password</button></form>");
}

void Pages::PasswordReset(const Request& req, Response& res)
{
    const std::string mobile = text::Trim(Get(req.params, "MobileNumber"));
    if (const auto customer = mStore.CustomerByMobile(mobile); customer && customer->activated) {
        const std::string fresh = password::Random(8);
        mStore.SetPassword(customer->id, password::MakeHash(fresh));
        ForgetLogin(mobile);
        mStore.AddOutbox(mobile, "Your new Quillo Tone password is " + fresh + ".");
    }
    // The same words either way, so the page tells nobody which numbers are customers.
    Page(res, "Forgotten your password?",
         "<p>If " + text::Html(mobile) +
             " belongs to a Quillo Tone account, a new password is on its way to that phone.</p>");
}

void Pages::OutboxPage(const Request&, Response& res)
{
    std::string rows;
    for (const auto& m : mStore.Outbox(200))
        rows += "<tr><td>" + std::to_string(m.id) + "</td><td>" + text::Html(m.created) + "</td><td>" +
                text::Html(m.mobile) + "</td><td>" + text::Html(m.text) + "</td></tr>\n";
    Page(res, "Outbox",
         "<p>The text messages the service sends, newest first: this is what the phones receive.</p>"
         "<table><tr><th>#</th><th>Sent (UTC)</th><th>To</th><th>Message</th></tr>\n" + rows + "</table>");
}
