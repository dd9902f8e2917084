#include "ToneTransfer.h"

#include "Accounts.h"
#include "PasswordHash.h"
#include "Store.h"
#include "Text.h"
#include "wire/Pages.h"
#include "wire/ToneFormats.h"
#include "wire/ToneUpload.h"

#include <QString>
#include <QXmlStreamReader>
#include <httplib.h>
#include <filesystem>
#include <fstream>
#include <optional>

using namespace page;

namespace {
using wire::kToneFieldChars;
constexpr size_t kMaxToneFields = (2 * ToneTransfer::kMaxToneBytes + kToneFieldChars - 1) / kToneFieldChars;
constexpr size_t kMaxOtherFields = 16;
constexpr size_t kMaxKeyLength = 32;
constexpr size_t kMaxValueLength = 64 * 1024;

struct Refusal {
    int code;
    std::string text;
};

int HexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string Extension(const std::string& filename)
{
    const auto dot = filename.rfind('.');
    return dot == std::string::npos ? std::string() : filename.substr(dot + 1);
}

// One upload, read as it arrives: the account and the record come first and
// are checked before any of the tone is kept; the tone's hexadecimal goes
// straight into a ".part" file. After a refusal the rest is read and dropped,
// so that the program gets the reply.
class Upload {
public:
    Upload(Store& store, Accounts& accounts, const std::string& toneFolder, const std::string& base,
           const std::string& address)
        : mStore(store), mAccounts(accounts), mToneFolder(toneFolder), mBase(base), mAddress(address)
    {
    }
    ~Upload()
    {
        if (!mPartPath.empty())
            std::filesystem::remove(mPartPath);
    }

    void Refuse(int code, const std::string& text)
    {
        if (!mRefusal)
            mRefusal = Refusal{code, text};
    }

    void Feed(const char* data, size_t length)
    {
        mReceived += length;
        if (mReceived > ToneTransfer::kMaxBody)
            Refuse(5, "The tone is too large to send");
        if (mRefusal)
            return;
        try {
            for (size_t i = 0; i < length && !mRefusal; ++i)
                Take(data[i]);
        } catch (const Refusal& refusal) {
            Refuse(refusal.code, refusal.text);
        }
    }

    // The reply to the whole upload.
    std::string Finish()
    {
        if (!mRefusal) {
            try {
                EndField();
                if (!mBegun)
                    Begin();
                if (!mKept && mToneBytes == 0)
                    throw Refusal{3, "The tone is empty"};
                if (!mKept)
                    Keep();
            } catch (const Refusal& refusal) {
                Refuse(refusal.code, refusal.text);
            }
        }
        if (mRefusal)
            return ToneTransfer::RefusalReply(mRefusal->code, mRefusal->text);
        return "1," + std::to_string(mKept->id) + "," + ToneLink(mBase, mKept->token);
    }

private:
    void Take(char c)
    {
        if (c == '&') {
            EndField();
            return;
        }
        if (!mInValue) {
            if (c == '=') {
                StartValue();
                return;
            }
            if (mKey.size() >= kMaxKeyLength)
                throw Refusal{4, "Malformed field " + mKey.substr(0, 16)};
            mKey += c;
            return;
        }
        if (mToneField == 0) {
            if (mValue.size() >= kMaxValueLength)
                throw Refusal{4, "Field " + mKey + " is too long"};
            mValue += c;
            return;
        }
        const int nibble = HexValue(c);
        if (nibble < 0)
            throw Refusal{4, "Field tonedata" + std::to_string(mToneField) + " is not hexadecimal"};
        ++mFieldChars;
        if (mHalf < 0) {
            mHalf = nibble;
            return;
        }
        mBuffer += static_cast<char>(mHalf * 16 + nibble);
        mHalf = -1;
        if (++mToneBytes > ToneTransfer::kMaxToneBytes)
            throw Refusal{3, "The tone is too large for a phone"};
        if (mBuffer.size() >= 64 * 1024)
            Flush();
    }

    void StartValue()
    {
        mInValue = true;
        if (mKey.rfind("tonedata", 0) != 0)
            return;
        const std::string number = mKey.substr(8);
        if (!text::IsDigits(number) || number.size() > 4)
            throw Refusal{4, "Malformed field " + mKey.substr(0, 16)};
        if (!mBegun)
            Begin();
        const size_t n = std::stoul(number);
        if (n != mToneFields + 1)
            throw Refusal{4, "Missing field tonedata" + std::to_string(mToneFields + 1)};
        if (mToneFields > 0 && mLastFieldChars != kToneFieldChars)
            throw Refusal{4, "Field tonedata" + std::to_string(mToneFields) + " is cut short"};
        if (n > kMaxToneFields)
            throw Refusal{3, "The tone is too large for a phone"};
        mToneField = n;
        mFieldChars = 0;
    }

    void EndField()
    {
        if (mToneField != 0) {
            if (mHalf >= 0)
                throw Refusal{4, "Field tonedata" + std::to_string(mToneField) + " is cut short"};
            mToneFields = mToneField;
            mLastFieldChars = mFieldChars;
        } else if (!mKey.empty() || mInValue) {
            if (++mOtherFields > kMaxOtherFields)
                throw Refusal{4, "Too many fields"};
            mFields.emplace(httplib::detail::decode_url(mKey, true), httplib::detail::decode_url(mValue, true));
        }
        mKey.clear();
        mValue.clear();
        mInValue = false;
        mToneField = 0;
    }

    // The account and the record, before any of the tone is kept.
    void Begin()
    {
        mBegun = true;
        const Params& fields = mFields;
        const auto need = [&](const char* key) {
            if (!Has(fields, key))
                throw Refusal{4, std::string("Missing field ") + key};
            return Get(fields, key);
        };
        const std::string mobile = need("MobileNumber");
        const std::string plainPassword = need("Password");
        const std::string xml = need("xmldata");
        mCustomer = mAccounts.Authenticate(mobile, plainPassword, mAddress);
        if (!mCustomer)
            throw Refusal{1, "Invalid mobile number or password"};
        const auto record = ReadToneRecord(xml);
        const wire::ToneFormat* format = record ? wire::ToneFormatOfType(record->contentType) : nullptr;
        if (!format || record->mobileNumber != mobile || record->filename.empty() ||
            record->filename.find_first_of("/\\") != std::string::npos || Extension(record->filename) != format->extension)
            throw Refusal{2, "The tone record does not describe a tone"};
        mTone.customerId = mCustomer->id;
        mTone.contentType = record->contentType;
        mTone.filename = record->filename;
        // A retry of an upload whose reply was lost: the stored tone answers.
        mKept = mStore.ToneByName(mCustomer->id, record->filename);
        if (mKept) {
            mDropping = true;
            return;
        }
        mTone.token = password::RandomHex(16);
        mTone.path = mToneFolder + "/" + mTone.token + "." + std::string(format->extension);
        mPartPath = mTone.path + ".part";
        mFile.open(mPartPath, std::ios::binary | std::ios::trunc);
        if (!mFile)
            throw std::runtime_error("cannot store the tone");
    }

    void Flush()
    {
        if (!mDropping)
            mFile.write(mBuffer.data(), static_cast<std::streamsize>(mBuffer.size()));
        mBuffer.clear();
    }

    void Keep()
    {
        Flush();
        mFile.close();
        if (!mFile)
            throw std::runtime_error("cannot store the tone");
        std::filesystem::rename(mPartPath, mTone.path);
        mPartPath.clear();
        mTone.size = static_cast<int64_t>(mToneBytes);
        mKept = mStore.AddTone(mTone, mCustomer->mobile, "Your Quillo Tone is ready: " + ToneLink(mBase, mTone.token));
        // Two tries of one upload at once: the first one stored stands.
        if (mKept->token != mTone.token)
            std::filesystem::remove(mTone.path);
    }

    ::Store& mStore;
    Accounts& mAccounts;
    const std::string& mToneFolder;
    const std::string& mBase;
    const std::string& mAddress;

    std::optional<Refusal> mRefusal;
    size_t mReceived = 0;
    std::string mKey, mValue;
    bool mInValue = false;
    Params mFields;
    size_t mOtherFields = 0;
    size_t mToneField = 0, mToneFields = 0, mFieldChars = 0, mLastFieldChars = 0;
    int mHalf = -1;
    size_t mToneBytes = 0;
    std::string mBuffer;

    bool mBegun = false, mDropping = false;
    std::optional<Customer> mCustomer;
    Tone mTone;
    std::optional<Tone> mKept;
    std::string mPartPath;
    std::ofstream mFile;
};
}  // namespace

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

ToneTransfer::ToneTransfer(Store& store, Accounts& accounts, const std::string& toneFolder, const std::string& base)
    : mStore(store), mAccounts(accounts), mToneFolder(toneFolder), mBase(base)
{
    std::filesystem::create_directories(mToneFolder);
}

std::string ToneTransfer::RefusalReply(int code, const std::string& text)
{
    return "0," + std::to_string(code) + "," + text::Field(text);
}

void ToneTransfer::Register(httplib::Server& server)
{
    server.Get(R"(/tones/([0-9a-f]{32}))",
               Guarded([this](const Request& req, Response& res) { DownloadTone(req, res); }));
    server.Post(Route(wire::kToneUpload), [this](const Request& req, Response& res, const httplib::ContentReader& reader) {
        std::string reply;
        try {
            Upload upload(mStore, mAccounts, mToneFolder, mBase, req.remote_addr);
            // Refused before any of it is kept; read to its end all the same,
            // so that the reply reaches a program that sends first and reads after.
            if (req.get_header_value<uint64_t>("Content-Length") > kMaxBody)
                upload.Refuse(5, "The tone is too large to send");
            reader([&](const char* data, size_t length) {
                upload.Feed(data, length);
                return true;
            });
            reply = upload.Finish();
        } catch (const std::exception&) {
            reply = "0,6,The service could not do that just now. Please try again";
        }
        res.status = 200;
        Reply(res, reply);
    });
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
