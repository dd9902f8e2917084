#include "ProgramPages.h"

#include "Accounts.h"
#include "CodePicture.h"
#include "Store.h"
#include "Text.h"
#include "wire/Pages.h"

#include <httplib.h>
#include <sstream>

using namespace page;

namespace {
constexpr int kFreeQuillsAtSignUp = 3;
constexpr int64_t kMaxReferrals = 10;
constexpr size_t kMaxCodeLength = 32;
const char* const kDefaultFormat = "AMR Narrowband";

// The number as a friend abroad would dial it: "+", the country code, the
// national number without its leading zeros.
std::string International(const std::string& dialCode, const std::string& mobile)
{
    const auto first = mobile.find_first_not_of('0');
    return "+" + dialCode + (first == std::string::npos ? std::string() : mobile.substr(first));
}
}  // namespace

ProgramPages::ProgramPages(Store& store, Accounts& accounts, const std::string& base)
    : mStore(store), mAccounts(accounts), mBase(base)
{
}

std::optional<Customer> ProgramPages::Caller(const Request& req)
{
    return mAccounts.Authenticate(Get(req.params, "MobileNumber"), Get(req.params, "Password"), req.remote_addr);
}

void ProgramPages::Register(httplib::Server& server)
{
    const auto on = [&](const char* path, void (ProgramPages::*handler)(const Request&, Response&)) {
        server.Get(Route(path), Guarded([this, handler](const Request& req, Response& res) { (this->*handler)(req, res); }));
    };
    on(wire::kCountryList, &ProgramPages::CountryList);
    on(wire::kTerminalVendorList, &ProgramPages::VendorList);
    on(wire::kTerminalTypeList, &ProgramPages::ModelList);
    on(wire::kServiceProviderList, &ProgramPages::ProviderList);
    on(wire::kLogin, &ProgramPages::Login);
    on(wire::kAddCustomer, &ProgramPages::AddCustomer);
    on(wire::kActivateCustomer, &ProgramPages::ActivateCustomer);
    on(wire::kReferFriends, &ProgramPages::ReferFriends);
    on(wire::kPostSongData, &ProgramPages::PostSongData);
    on(wire::kLookupMobileNumber, &ProgramPages::LookupMobileNumber);
    on(wire::kSend, &ProgramPages::Send);
    on(wire::kAnnouncementRead, &ProgramPages::AnnouncementRead);
    on(wire::kUpdateTID, &ProgramPages::UpdateTID);
    on(wire::kDeleteTID, &ProgramPages::DeleteTID);
    on(wire::kCheckVersion, &ProgramPages::CheckVersion);
    on(wire::kCodePicture, &ProgramPages::CodePicture);
}

void ProgramPages::CountryList(const Request&, Response& res)
{
    std::string out;
    for (const auto& c : mStore.Countries())
        out += std::to_string(c.id) + "," + text::Field(c.name) + ",";
    Reply(res, out);
}

void ProgramPages::VendorList(const Request&, Response& res)
{
    std::string out;
    for (const auto& v : mStore.Vendors())
        out += std::to_string(v.id) + "," + text::Field(v.name) + ",";
    Reply(res, out);
}

void ProgramPages::ModelList(const Request& req, Response& res)
{
    std::string out;
    for (const auto& m : mStore.Models(Number(req.params, "TerminalVendorID")))
        out += std::to_string(m.id) + "," + text::Field(m.name) + ",";
    Reply(res, out);
}

void ProgramPages::ProviderList(const Request& req, Response& res)
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

void ProgramPages::Login(const Request& req, Response& res)
{
    const auto customer = Caller(req);
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

void ProgramPages::AddCustomer(const Request& req, Response& res)
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
    else if (const auto weak = Accounts::PasswordRefusal(plainPassword); !weak.empty())
        refusal = weak;
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
    c.freeQuills = kFreeQuillsAtSignUp;
    c.preferredFormat = model->format;
    c.chargeText = country->chargeText;
    const auto signUp = mAccounts.AddCustomer(c, plainPassword, req.remote_addr);
    if (!signUp.id) {
        Reply(res, "0," + text::Field(signUp.refusal));
        return;
    }
    // The program compares the code the person types with this copy.
    Reply(res, "1," + std::to_string(*signUp.id) + "," + signUp.code);
}

void ProgramPages::ActivateCustomer(const Request& req, Response& res)
{
    const int64_t id = Number(req.params, "CustomerID");
    const std::string code = text::Trim(Get(req.params, "ActivationCode"));
    const auto customer = mStore.CustomerById(id);
    const std::string welcome =
        "Welcome to Quillo Tone" + (customer ? ", " + customer->firstName : std::string()) + "!\r\n" + "Your first " +
        std::to_string(kFreeQuillsAtSignUp) + " tones are on us: each one uses a free quill.\r\n" +
        "Refer your friends to earn more.";
    Reply(res, mAccounts.Activate(id, code, welcome, req.remote_addr) ? "1" : "0");
}

void ProgramPages::ReferFriends(const Request& req, Response& res)
{
    const int64_t referrerId = Number(req.params, "refCustomerID");
    const auto referrer = Caller(req);
    if (!referrer || referrer->id != referrerId) {
        Reply(res, "Invalid mobile number or password");
        return;
    }
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

void ProgramPages::PostSongData(const Request& req, Response& res)
{
    const std::string cid = Get(req.params, "CID");
    const auto customer = Caller(req);
    if (!customer || std::to_string(customer->id) != cid) {
        Reply(res, "0");
        return;
    }
    mStore.AddSongReport(cid, Get(req.params, "SongBlob"));
    Reply(res, "1");
}

void ProgramPages::LookupMobileNumber(const Request& req, Response& res)
{
    Reply(res, mAccounts.InUse(text::Trim(Get(req.params, "MobileNumber"))) ? "1" : "0");
}

void ProgramPages::Send(const Request& req, Response& res)
{
    const auto customer = Caller(req);
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
    mStore.AddOutbox(customer->mobile, "Your Quillo Tone is ready: " + ToneLink(mBase, tone->token));
    Reply(res, "1," + std::to_string(tone->id) + "," + ToneLink(mBase, tone->token));
}

void ProgramPages::AnnouncementRead(const Request& req, Response& res)
{
    const auto customer = Caller(req);
    Reply(res, customer ? mStore.TakeAnnouncement(customer->id).value_or(std::string()) : std::string());
}

void ProgramPages::UpdateTID(const Request& req, Response& res)
{
    const auto customer = Caller(req);
    const auto model = mStore.ModelById(Number(req.params, "TerminalTypeID"));
    if (!customer || !model) {
        Reply(res, "0");
        return;
    }
    mStore.SetModel(customer->id, model->id, model->format);
    Reply(res, "1");
}

void ProgramPages::DeleteTID(const Request& req, Response& res)
{
    const auto customer = Caller(req);
    if (!customer) {
        Reply(res, "0");
        return;
    }
    mStore.SetModel(customer->id, 0, kDefaultFormat);
    Reply(res, "1");
}

void ProgramPages::CheckVersion(const Request& req, Response& res)
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

void ProgramPages::CodePicture(const Request& req, Response& res)
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
