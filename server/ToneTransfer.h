#pragma once
// Tones in and out: the program's upload "SendT2.asp" and the links the
// phones fetch the tones from.
//
// The upload answers every refusal with 200 and "0,<code>,<text>": the
// program takes any reply of fewer than three fields as delivered.
//   1 number or password wrong   2 the tone record is not a tone's
//   3 the tone is empty or too large   4 a field is missing or malformed
//   5 the body is larger than any tone   6 the service failed
// A retry of an upload that was stored (the customer and the program's tone
// name match) gets the stored tone's reply and is not charged again.
#include "PageKit.h"

#include <cstddef>
#include <optional>
#include <string>

// What the service takes from a tone record.
struct ToneRecord {
    std::string contentType, filename, mobileNumber;
};
// The attributes of the one empty element "Message" that a tone record is;
// nothing when the text is no such record.
std::optional<ToneRecord> ReadToneRecord(const std::string& xml);

class Accounts;
class Store;
namespace httplib {
class Server;
}

class ToneTransfer {
public:
    // The largest tone a person can send with "Send anyway": the whole of a
    // ten-minute song in the largest format, WAV at 16000 Hz, 16 bits, 1 channel.
    static constexpr size_t kMaxToneBytes = size_t{600} * 16000 * 2;
    // Its hexadecimal, the field names, the account and the tone record.
    static constexpr size_t kMaxBody = 2 * kMaxToneBytes + 128 * 1024;

    ToneTransfer(Store& store, Accounts& accounts, const std::string& toneFolder, const std::string& base);
    // A refusal as the upload words it, one of the codes above.
    static std::string RefusalReply(int code, const std::string& text);
    void Register(httplib::Server& server);

private:
    using Request = page::Request;
    using Response = page::Response;

    void DownloadTone(const Request&, Response&);

    Store& mStore;
    Accounts& mAccounts;
    std::string mToneFolder;
    const std::string& mBase;
};
