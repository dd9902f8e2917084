#pragma once
// The service's one SQLite database. Every value goes in through a bound
// parameter of a prepared statement; statements are prepared once and kept.
// One connection serves all request threads, one at a time.
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

struct NamedId {
    int64_t id = 0;
    std::string name;
};

struct Country {
    int64_t id = 0;
    std::string name, dialCode, chargeText;
};

struct Provider {
    int64_t id = 0, countryId = 0;
    std::string name, prefix;
    int64_t minLength = 0, maxLength = 0;
};

struct PhoneModel {
    int64_t id = 0, vendorId = 0;
    std::string name, format;
};

struct Customer {
    int64_t id = 0;
    std::string mobile, firstName, lastName, gender, email, passwordHash;
    int64_t age = 0, countryId = 0, vendorId = 0, modelId = 0, providerId = 0;
    bool receiveMarketing = false;
    std::string partnerId, activationCode;
    bool activated = false;
    int64_t activationTries = 0;
    int64_t ageSeconds = 0;  // since the sign-up
    int64_t freeQuills = 0;
    std::string preferredFormat, chargeText;
};

struct Tone {
    int64_t id = 0, customerId = 0, size = 0;
    std::string token, contentType, filename, path;
};

struct OutboxMessage {
    int64_t id = 0;
    std::string mobile, text, created;
};

class Store {
public:
    explicit Store(const std::string& path);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    std::vector<NamedId> Countries();
    std::vector<NamedId> Vendors();
    std::vector<NamedId> Models(int64_t vendorId);
    std::vector<Provider> Providers(std::optional<int64_t> countryId);
    std::optional<Country> CountryById(int64_t id);
    std::optional<Provider> ProviderById(int64_t id);
    std::optional<PhoneModel> ModelById(int64_t id);

    std::optional<Customer> CustomerByMobile(const std::string& mobile);
    std::optional<Customer> CustomerById(int64_t id);
    // Adds a customer waiting for activation, in place of one that waited
    // under the same number for longer than pendingLifetime seconds; returns
    // its id. Fails if the number is taken, by a customer or a fresh sign-up.
    std::optional<int64_t> AddCustomer(const Customer& c, int64_t pendingLifetime);
    enum class Activation { Done, WrongCode, Refused };
    // Marks the customer active if the code is theirs, the sign-up is younger
    // than lifetime seconds and fewer than maxTries wrong codes came before;
    // a friend who referred the number earns a free quill. A wrong code counts.
    Activation Activate(int64_t customerId, const std::string& code, const std::string& welcome, int64_t maxTries,
                        int64_t lifetime);
    void SetPassword(int64_t customerId, const std::string& hash);
    void SetModel(int64_t customerId, int64_t modelId, const std::string& format);

    void AddAnnouncement(int64_t customerId, const std::string& text);
    // The oldest unread announcement, now marked read.
    std::optional<std::string> TakeAnnouncement(int64_t customerId);

    int64_t ReferralCount(int64_t customerId);
    bool WasReferred(const std::string& mobile);
    void AddReferral(int64_t customerId, const std::string& firstName, const std::string& mobile);

    void AddSongReport(const std::string& customerId, const std::string& blob);

    // Records a stored tone, spends a free quill if one is left and queues the
    // text message with its link, all or nothing. A tone the customer already
    // sent under this file name is not added again: the stored one comes back.
    Tone AddTone(const Tone& tone, const std::string& mobile, const std::string& message);
    std::optional<Tone> ToneByName(int64_t customerId, const std::string& filename);
    std::optional<Tone> ToneByToken(const std::string& token);
    std::optional<Tone> ToneById(int64_t customerId, int64_t toneId);
    int64_t ToneCount();
    // Where every recorded tone is stored.
    std::vector<std::string> TonePaths();

    void AddOutbox(const std::string& mobile, const std::string& text);
    std::vector<OutboxMessage> Outbox(int limit);
    std::vector<OutboxMessage> OutboxOf(const std::string& mobile, int limit);

private:
    class Query;
    class Transaction;
    Query Prepare(const char* sql);
    void Exec(const char* sql);
    std::optional<Customer> CustomerWhere(const char* sql, const std::string& key, int64_t id);

    sqlite3* mDb = nullptr;
    std::recursive_mutex mMutex;
    std::unordered_map<const char*, sqlite3_stmt*> mStatements;
};
