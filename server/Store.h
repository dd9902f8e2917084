#pragma once
// What the service keeps, in its database (SQLite or PostgreSQL, the same
// rows on both). Every value goes in through a bound parameter. Whatever
// several service processes must agree on is kept here, not in a process:
// accounts, the outbox, tones, guess limits, reset codes and one-time links.
#include "Database.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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

// Events counted against one key of one kind of limit; times in
// milliseconds of the wall clock, which every process shares.
struct Tally {
    int64_t events = 0, lastMs = 0, untilMs = 0;
};

class Store {
public:
    // url: "sqlite:PATH" or a postgresql:// URL. Creates or updates the schema.
    explicit Store(const std::string& url);
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
    // bytes: the tone itself when the store keeps the tones' bytes.
    Tone AddTone(const Tone& tone, const std::string* bytes, const std::string& mobile, const std::string& message);
    // With a database that several processes share the tones' bytes are kept
    // in it; otherwise in files, whose paths the tones name.
    bool KeepsToneBytes() const { return mDb->Shared(); }
    std::optional<std::string> ToneBytes(int64_t toneId);
    std::optional<Tone> ToneByName(int64_t customerId, const std::string& filename);
    std::optional<Tone> ToneByToken(const std::string& token);
    std::optional<Tone> ToneById(int64_t customerId, int64_t toneId);
    int64_t ToneCount();
    // Where every recorded tone is stored.
    std::vector<std::string> TonePaths();

    void AddOutbox(const std::string& mobile, const std::string& text);
    std::vector<OutboxMessage> Outbox(int limit);
    std::vector<OutboxMessage> OutboxOf(const std::string& mobile, int limit);

    std::optional<Tally> TallyOf(const std::string& kind, const std::string& key);
    // Changes the key's tally (a fresh one when it has none) and keeps it, as one step.
    void CountTally(const std::string& kind, const std::string& key, const std::function<void(Tally&)>& change);
    void ClearTally(const std::string& kind, const std::string& key);
    // Forgets the kind's tallies with no event since quietSinceMs and no wait beyond it.
    void PruneTallies(const std::string& kind, int64_t quietSinceMs);

    // The number's reset code (its hash), in place of any earlier one.
    void PutReset(const std::string& mobile, const std::string& hash, int64_t expiresMs);
    // The hash while the code is fresh and has tries left, counting this try;
    // an old or spent code goes.
    std::optional<std::string> TryReset(const std::string& mobile, int64_t nowMs, int64_t maxTries);
    // Uses the code up; false when another request used it first.
    bool TakeReset(const std::string& mobile, const std::string& hash);

    // A one-time link to a phone's messages; false when maxOpen are open.
    bool AddLink(const std::string& token, const std::string& mobile, int64_t expiresMs, int64_t nowMs,
                 int64_t maxOpen);
    // The link's number, once, while it is fresh.
    std::optional<std::string> TakeLink(const std::string& token, int64_t nowMs);

    // Milliseconds of the wall clock, as the tallies, codes and links count them.
    static int64_t NowMs();

private:
    std::optional<Customer> CustomerWhere(const std::string& sql, const sql::Value& key);
    static void AddOutbox(sql::Runner& runner, const std::string& mobile, const std::string& text);
    static void AddAnnouncement(sql::Runner& runner, int64_t customerId, const std::string& text);
    static std::optional<Tone> ToneWhere(sql::Runner& runner, const std::string& where, const sql::Values& values);

    std::unique_ptr<sql::Database> mDb;
};
