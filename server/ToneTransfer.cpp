#include "ToneTransfer.h"

#include "Accounts.h"
#include "PasswordHash.h"
#include "Store.h"
#include "Text.h"

#include <QString>
#include <QXmlStreamReader>
#include <httplib.h>
#include <filesystem>
#include <fstream>
#include <map>

using namespace page;

namespace {
constexpr size_t kToneFieldChars = 32760;
constexpr size_t kMaxToneBytes = 1000000;
constexpr size_t kMaxUploadBody = 4 * 1024 * 1024;

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

ToneTransfer::ToneTransfer(Store& store, Accounts& accounts, const std::string& toneFolder, const std::string& base)
    : mStore(store), mAccounts(accounts), mToneFolder(toneFolder), mBase(base)
{
    std::filesystem::create_directories(mToneFolder);
}

void ToneTransfer::Register(httplib::Server& server)
{
    server.Get(R"(/tones/([0-9a-f]{32}))",
               Guarded([this](const Request& req, Response& res) { DownloadTone(req, res); }));
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
}

void ToneTransfer::UploadTone(const Request&, Response& res, std::string_view body)
{
    // The tone fields are hexadecimal and need no decoding; they are read in
    // place, since they make up nearly all of the body.
    httplib::Params params;
    std::map<size_t, std::string_view> toneFields;
    while (!body.empty()) {
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
    const auto customer = mAccounts.Authenticate(mobile, Get(params, "Password"));
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
    const std::string link = ToneLink(mBase, stored.token);
    const int64_t id = mStore.AddTone(stored, customer->mobile, "Your Quillo Tone is ready: " + link);
    Reply(res, "1," + std::to_string(id) + "," + link);
}

void ToneTransfer::DownloadTone(const Request& req, Response& res)
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
