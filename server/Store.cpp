#include "Store.h"

#include "Seeds.h"

#include <chrono>

namespace {
// Each schema's steps, oldest first; a database keeps the number it has run.
const char* const kSqliteFirst = R"(
CREATE TABLE IF NOT EXISTS countries(id INTEGER PRIMARY KEY, name TEXT NOT NULL, dial_code TEXT NOT NULL,
    charge_text TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS providers(id INTEGER PRIMARY KEY, country_id INTEGER NOT NULL REFERENCES countries,
    name TEXT NOT NULL, prefix TEXT NOT NULL, min_length INTEGER NOT NULL, max_length INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS vendors(id INTEGER PRIMARY KEY, name TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS models(id INTEGER PRIMARY KEY, vendor_id INTEGER NOT NULL REFERENCES vendors,
    name TEXT NOT NULL, format TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS customers(id INTEGER PRIMARY KEY AUTOINCREMENT, mobile TEXT NOT NULL UNIQUE,
    first_name TEXT, last_name TEXT, gender TEXT, email TEXT, password_hash TEXT NOT NULL, age INTEGER,
    country_id INTEGER, vendor_id INTEGER, model_id INTEGER, provider_id INTEGER, receive_marketing INTEGER,
    partner_id TEXT, activation_code TEXT, activated INTEGER NOT NULL DEFAULT 0,
    free_quills INTEGER NOT NULL DEFAULT 0, preferred_format TEXT NOT NULL, charge_text TEXT NOT NULL,
    created TEXT NOT NULL DEFAULT CURRENT_TIMESTAMP);
CREATE TABLE IF NOT EXISTS announcements(id INTEGER PRIMARY KEY, customer_id INTEGER NOT NULL,
    text TEXT NOT NULL, read INTEGER NOT NULL DEFAULT 0);
CREATE INDEX IF NOT EXISTS announcements_unread ON announcements(customer_id, read);
CREATE TABLE IF NOT EXISTS referrals(id INTEGER PRIMARY KEY, customer_id INTEGER NOT NULL,
    first_name TEXT NOT NULL, mobile TEXT NOT NULL, rewarded INTEGER NOT NULL DEFAULT 0,
    created TEXT NOT NULL DEFAULT CURRENT_TIMESTAMP);
CREATE INDEX IF NOT EXISTS referrals_mobile ON referrals(mobile);
CREATE INDEX IF NOT EXISTS referrals_customer ON referrals(customer_id);
CREATE TABLE IF NOT EXISTS song_reports(id INTEGER PRIMARY KEY, customer_id TEXT NOT NULL, blob TEXT NOT NULL,
    created TEXT NOT NULL DEFAULT CURRENT_TIMESTAMP);
CREATE TABLE IF NOT EXISTS tones(id INTEGER PRIMARY KEY, customer_id INTEGER NOT NULL, token TEXT NOT NULL UNIQUE,
    content_type TEXT NOT NULL, filename TEXT NOT NULL, path TEXT NOT NULL, size INTEGER NOT NULL,
    charged INTEGER NOT NULL, created TEXT NOT NULL DEFAULT CURRENT_TIMESTAMP);
CREATE INDEX IF NOT EXISTS tones_name ON tones(customer_id, filename);
CREATE TABLE IF NOT EXISTS outbox(id INTEGER PRIMARY KEY, mobile TEXT NOT NULL, text TEXT NOT NULL,
    created TEXT NOT NULL DEFAULT CURRENT_TIMESTAMP);
CREATE INDEX IF NOT EXISTS outbox_mobile ON outbox(mobile);
)";

// The same tables; times as timestamps in UTC, which read as SQLite's do.
const char* const kPostgresFirst = R"(
CREATE TABLE countries(id BIGSERIAL PRIMARY KEY, name TEXT NOT NULL, dial_code TEXT NOT NULL,
    charge_text TEXT NOT NULL);
CREATE TABLE providers(id BIGSERIAL PRIMARY KEY, country_id BIGINT NOT NULL REFERENCES countries,
    name TEXT NOT NULL, prefix TEXT NOT NULL, min_length BIGINT NOT NULL, max_length BIGINT NOT NULL);
CREATE TABLE vendors(id BIGSERIAL PRIMARY KEY, name TEXT NOT NULL);
CREATE TABLE models(id BIGSERIAL PRIMARY KEY, vendor_id BIGINT NOT NULL REFERENCES vendors,
    name TEXT NOT NULL, format TEXT NOT NULL);
CREATE TABLE customers(id BIGSERIAL PRIMARY KEY, mobile TEXT NOT NULL UNIQUE,
    first_name TEXT, last_name TEXT, gender TEXT, email TEXT, password_hash TEXT NOT NULL, age BIGINT,
    country_id BIGINT, vendor_id BIGINT, model_id BIGINT, provider_id BIGINT, receive_marketing BIGINT,
    partner_id TEXT, activation_code TEXT, activated BIGINT NOT NULL DEFAULT 0,
    free_quills BIGINT NOT NULL DEFAULT 0, preferred_format TEXT NOT NULL, charge_text TEXT NOT NULL,
    created TIMESTAMP(0) NOT NULL DEFAULT (now() AT TIME ZONE 'utc'),
    activation_tries BIGINT NOT NULL DEFAULT 0);
CREATE TABLE announcements(id BIGSERIAL PRIMARY KEY, customer_id BIGINT NOT NULL,
    text TEXT NOT NULL, read BIGINT NOT NULL DEFAULT 0);
CREATE INDEX announcements_unread ON announcements(customer_id, read);
CREATE TABLE referrals(id BIGSERIAL PRIMARY KEY, customer_id BIGINT NOT NULL,
    first_name TEXT NOT NULL, mobile TEXT NOT NULL, rewarded BIGINT NOT NULL DEFAULT 0,
    created TIMESTAMP(0) NOT NULL DEFAULT (now() AT TIME ZONE 'utc'));
CREATE INDEX referrals_mobile ON referrals(mobile);
CREATE INDEX referrals_customer ON referrals(customer_id);
CREATE TABLE song_reports(id BIGSERIAL PRIMARY KEY, customer_id TEXT NOT NULL, blob TEXT NOT NULL,
    created TIMESTAMP(0) NOT NULL DEFAULT (now() AT TIME ZONE 'utc'));
CREATE TABLE tones(id BIGSERIAL PRIMARY KEY, customer_id BIGINT NOT NULL, token TEXT NOT NULL UNIQUE,
    content_type TEXT NOT NULL, filename TEXT NOT NULL, path TEXT NOT NULL, size BIGINT NOT NULL,
    charged BIGINT NOT NULL, created TIMESTAMP(0) NOT NULL DEFAULT (now() AT TIME ZONE 'utc'));
CREATE INDEX tones_name ON tones(customer_id, filename);
CREATE TABLE outbox(id BIGSERIAL PRIMARY KEY, mobile TEXT NOT NULL, text TEXT NOT NULL,
    created TIMESTAMP(0) NOT NULL DEFAULT (now() AT TIME ZONE 'utc'));
CREATE INDEX outbox_mobile ON outbox(mobile);
CREATE FUNCTION seconds_since(t TIMESTAMP) RETURNS BIGINT LANGUAGE sql STABLE
    AS 'SELECT floor(extract(epoch FROM (now() AT TIME ZONE ''utc'') - t))::BIGINT';
)";

// What was kept in each process's memory, for several processes to share.
const char* const kSharedLimits = R"(
CREATE TABLE tallies(kind TEXT NOT NULL, key TEXT NOT NULL, events BIGINT NOT NULL, last_ms BIGINT NOT NULL,
    until_ms BIGINT NOT NULL, PRIMARY KEY(kind, key));
CREATE INDEX tallies_last ON tallies(kind, last_ms);
CREATE TABLE resets(mobile TEXT PRIMARY KEY, hash TEXT NOT NULL, expires_ms BIGINT NOT NULL,
    tries BIGINT NOT NULL);
CREATE TABLE links(token TEXT PRIMARY KEY, mobile TEXT NOT NULL, expires_ms BIGINT NOT NULL);
ALTER TABLE tones ADD COLUMN bytes BYTEA;
)";

const char* const kCustomerColumns =
    "SELECT id, mobile, first_name, last_name, gender, email, password_hash, age, country_id, vendor_id, model_id,"
    " provider_id, receive_marketing, partner_id, activation_code, activated, free_quills, preferred_format,"
    " charge_text, activation_tries, seconds_since(created) FROM customers ";

const char* const kToneColumns = "SELECT id, customer_id, size, token, content_type, filename, path FROM tones ";
const char* const kToneByName = "WHERE customer_id = ? AND filename = ? LIMIT 1";

std::vector<NamedId> NamedRows(const sql::Result& r)
{
    std::vector<NamedId> rows;
    for (size_t i = 0; i < r.rows.size(); ++i)
        rows.push_back({r.Int(i, 0), r.Text(i, 1)});
    return rows;
}

Provider ProviderRow(const sql::Result& r, size_t i)
{
    return {r.Int(i, 0), r.Int(i, 1), r.Text(i, 2), r.Text(i, 3), r.Int(i, 4), r.Int(i, 5)};
}

std::vector<OutboxMessage> MessageRows(const sql::Result& r)
{
    std::vector<OutboxMessage> rows;
    for (size_t i = 0; i < r.rows.size(); ++i)
        rows.push_back({r.Int(i, 0), r.Text(i, 1), r.Text(i, 2), r.Text(i, 3)});
    return rows;
}
}  // namespace

Store::Store(const std::string& url) : mDb(sql::Open(url))
{
    mDb->Migrate({mDb->Shared() ? kPostgresFirst : kSqliteFirst, kSharedLimits}, [](sql::Session& s) {
        if (s.Run("SELECT count(*) FROM countries").Int(0, 0) == 0)
            s.Script(kSeedSql);
    });
    // SQLite databases made before wrong activation codes were counted.
    try {
        mDb->Run("SELECT activation_tries FROM customers LIMIT 0");
    } catch (const std::runtime_error&) {
        mDb->Run("ALTER TABLE customers ADD COLUMN activation_tries INTEGER NOT NULL DEFAULT 0");
    }
}

int64_t Store::NowMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::vector<NamedId> Store::Countries()
{
    return NamedRows(mDb->Run("SELECT id, name FROM countries ORDER BY name"));
}

std::vector<NamedId> Store::Vendors()
{
    return NamedRows(mDb->Run("SELECT id, name FROM vendors ORDER BY name"));
}

std::vector<NamedId> Store::Models(int64_t vendorId)
{
    return NamedRows(mDb->Run("SELECT id, name FROM models WHERE vendor_id = ? ORDER BY name", {vendorId}));
}

std::vector<Provider> Store::Providers(std::optional<int64_t> countryId)
{
    const auto r = mDb->Run("SELECT id, country_id, name, prefix, min_length, max_length FROM providers"
                            " WHERE ? = 0 OR country_id = ? ORDER BY name",
                            {int64_t{countryId.has_value()}, countryId.value_or(0)});
    std::vector<Provider> rows;
    for (size_t i = 0; i < r.rows.size(); ++i)
        rows.push_back(ProviderRow(r, i));
    return rows;
}

std::optional<Country> Store::CountryById(int64_t id)
{
    const auto r = mDb->Run("SELECT id, name, dial_code, charge_text FROM countries WHERE id = ?", {id});
    if (r.Empty())
        return std::nullopt;
    return Country{r.Int(0, 0), r.Text(0, 1), r.Text(0, 2), r.Text(0, 3)};
}

std::optional<Provider> Store::ProviderById(int64_t id)
{
    const auto r =
        mDb->Run("SELECT id, country_id, name, prefix, min_length, max_length FROM providers WHERE id = ?", {id});
    if (r.Empty())
        return std::nullopt;
    return ProviderRow(r, 0);
}

std::optional<PhoneModel> Store::ModelById(int64_t id)
{
    const auto r = mDb->Run("SELECT id, vendor_id, name, format FROM models WHERE id = ?", {id});
    if (r.Empty())
        return std::nullopt;
    return PhoneModel{r.Int(0, 0), r.Int(0, 1), r.Text(0, 2), r.Text(0, 3)};
}

std::optional<Customer> Store::CustomerWhere(const std::string& where, const sql::Value& key)
{
    const auto r = mDb->Run(kCustomerColumns + where, {key});
    if (r.Empty())
        return std::nullopt;
    Customer c;
    c.id = r.Int(0, 0);
    c.mobile = r.Text(0, 1);
    c.firstName = r.Text(0, 2);
    c.lastName = r.Text(0, 3);
    c.gender = r.Text(0, 4);
    c.email = r.Text(0, 5);
    c.passwordHash = r.Text(0, 6);
    c.age = r.Int(0, 7);
    c.countryId = r.Int(0, 8);
    c.vendorId = r.Int(0, 9);
    c.modelId = r.Int(0, 10);
    c.providerId = r.Int(0, 11);
    c.receiveMarketing = r.Int(0, 12) != 0;
    c.partnerId = r.Text(0, 13);
    c.activationCode = r.Text(0, 14);
    c.activated = r.Int(0, 15) != 0;
    c.freeQuills = r.Int(0, 16);
    c.preferredFormat = r.Text(0, 17);
    c.chargeText = r.Text(0, 18);
    c.activationTries = r.Int(0, 19);
    c.ageSeconds = r.Int(0, 20);
    return c;
}

std::optional<Customer> Store::CustomerByMobile(const std::string& mobile)
{
    if (mobile.empty())
        return std::nullopt;
    return CustomerWhere("WHERE mobile = ?", mobile);
}

std::optional<Customer> Store::CustomerById(int64_t id)
{
    return CustomerWhere("WHERE id = ?", id);
}

std::optional<int64_t> Store::AddCustomer(const Customer& c, int64_t pendingLifetime)
{
    std::optional<int64_t> id;
    mDb->Transact([&](sql::Session& s) {
        s.Run("DELETE FROM customers WHERE mobile = ? AND activated = 0 AND seconds_since(created) >= ?",
              {c.mobile, pendingLifetime});
        const auto r = s.Run(
            "INSERT INTO customers(mobile, first_name, last_name, gender, email, password_hash, age, country_id,"
            " vendor_id, model_id, provider_id, receive_marketing, partner_id, activation_code, activated,"
            " free_quills, preferred_format, charge_text) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"
            " ON CONFLICT DO NOTHING RETURNING id",
            {c.mobile, c.firstName, c.lastName, c.gender, c.email, c.passwordHash, c.age, c.countryId, c.vendorId,
             c.modelId, c.providerId, int64_t{c.receiveMarketing}, c.partnerId, c.activationCode,
             int64_t{c.activated}, c.freeQuills, c.preferredFormat, c.chargeText});
        id = r.Empty() ? std::nullopt : std::optional(r.Int(0, 0));
    });
    return id;
}

Store::Activation Store::Activate(int64_t customerId, const std::string& code, const std::string& welcome,
                                  int64_t maxTries, int64_t lifetime)
{
    Activation outcome = Activation::Refused;
    mDb->Transact([&](sql::Session& s) {
        const auto open = s.Run("SELECT CASE WHEN activation_code = ? THEN 1 ELSE 0 END FROM customers"
                                " WHERE id = ? AND activated = 0 AND activation_tries < ?"
                                " AND seconds_since(created) < ?",
                                {code, customerId, maxTries, lifetime});
        if (open.Empty()) {
            outcome = Activation::Refused;
            return;
        }
        if (open.Int(0, 0) == 0) {
            s.Run("UPDATE customers SET activation_tries = activation_tries + 1 WHERE id = ?", {customerId});
            outcome = Activation::WrongCode;
            return;
        }
        const auto who = s.Run("UPDATE customers SET activated = 1 WHERE id = ? RETURNING mobile, first_name",
                               {customerId});
        AddAnnouncement(s, customerId, welcome);
        // The first friend who referred this number earns a free quill, and hears of it.
        const auto referrer = s.Run("UPDATE referrals SET rewarded = 1 WHERE id = (SELECT id FROM referrals"
                                    " WHERE mobile = ? AND rewarded = 0 ORDER BY id LIMIT 1) RETURNING customer_id",
                                    {who.Text(0, 0)});
        if (!referrer.Empty()) {
            s.Run("UPDATE customers SET free_quills = free_quills + 1 WHERE id = ?", {referrer.Int(0, 0)});
            AddAnnouncement(s, referrer.Int(0, 0),
                            "Your friend " + who.Text(0, 1) +
                                " has joined Quillo Tone. Thanks for the tip: one more free quill is yours!");
        }
        outcome = Activation::Done;
    });
    return outcome;
}

void Store::SetPassword(int64_t customerId, const std::string& hash)
{
    mDb->Run("UPDATE customers SET password_hash = ? WHERE id = ?", {hash, customerId});
}

void Store::SetModel(int64_t customerId, int64_t modelId, const std::string& format)
{
    mDb->Run("UPDATE customers SET model_id = ?, preferred_format = ? WHERE id = ?", {modelId, format, customerId});
}

void Store::AddAnnouncement(sql::Runner& runner, int64_t customerId, const std::string& text)
{
    runner.Run("INSERT INTO announcements(customer_id, text) VALUES(?, ?)", {customerId, text});
}

void Store::AddAnnouncement(int64_t customerId, const std::string& text)
{
    AddAnnouncement(*mDb, customerId, text);
}

std::optional<std::string> Store::TakeAnnouncement(int64_t customerId)
{
    const auto r = mDb->Run("UPDATE announcements SET read = 1 WHERE id = (SELECT id FROM announcements"
                            " WHERE customer_id = ? AND read = 0 ORDER BY id LIMIT 1) RETURNING text",
                            {customerId});
    if (r.Empty())
        return std::nullopt;
    return r.Text(0, 0);
}

int64_t Store::ReferralCount(int64_t customerId)
{
    return mDb->Run("SELECT count(*) FROM referrals WHERE customer_id = ?", {customerId}).Int(0, 0);
}

bool Store::WasReferred(const std::string& mobile)
{
    return !mDb->Run("SELECT 1 FROM referrals WHERE mobile = ? LIMIT 1", {mobile}).Empty();
}

void Store::AddReferral(int64_t customerId, const std::string& firstName, const std::string& mobile)
{
    mDb->Run("INSERT INTO referrals(customer_id, first_name, mobile) VALUES(?, ?, ?)", {customerId, firstName, mobile});
}

void Store::AddSongReport(const std::string& customerId, const std::string& blob)
{
    mDb->Run("INSERT INTO song_reports(customer_id, blob) VALUES(?, ?)", {customerId, blob});
}

Tone Store::AddTone(const Tone& tone, const std::string* bytes, const std::string& mobile, const std::string& message)
{
    Tone added = tone;
    mDb->Transact([&](sql::Session& s) {
        // A retry of an upload whose reply was lost, perhaps kept by another process meanwhile.
        if (auto sent = ToneWhere(s, kToneByName, {tone.customerId, tone.filename})) {
            added = *sent;
            return;
        }
        // A free quill pays if one is left; otherwise the tone is charged.
        const bool charged =
            s.Run("UPDATE customers SET free_quills = free_quills - 1 WHERE id = ? AND free_quills > 0",
                  {tone.customerId})
                .changed == 0;
        const sql::Value kept = bytes ? sql::Value(sql::Blob{bytes}) : sql::Value(nullptr);
        added = tone;
        added.id = s.Run("INSERT INTO tones(customer_id, token, content_type, filename, path, size, charged, bytes)"
                         " VALUES(?,?,?,?,?,?,?,?) RETURNING id",
                         {tone.customerId, tone.token, tone.contentType, tone.filename, tone.path, tone.size,
                          int64_t{charged}, kept})
                       .Int(0, 0);
        AddOutbox(s, mobile, message);
    });
    return added;
}

std::optional<std::string> Store::ToneBytes(int64_t toneId)
{
    // bytea rather than large objects: as fast to write, and read whole in
    // binary it comes back faster (19.2 MB: 133 ms against 151 ms).
    return mDb->FetchBytes("SELECT bytes FROM tones WHERE id = ?", {toneId});
}

std::optional<Tone> Store::ToneWhere(sql::Runner& runner, const std::string& where, const sql::Values& values)
{
    const auto r = runner.Run(kToneColumns + where, values);
    if (r.Empty())
        return std::nullopt;
    return Tone{r.Int(0, 0), r.Int(0, 1), r.Int(0, 2), r.Text(0, 3), r.Text(0, 4), r.Text(0, 5), r.Text(0, 6)};
}

std::optional<Tone> Store::ToneByToken(const std::string& token)
{
    return ToneWhere(*mDb, "WHERE token = ?", {token});
}

std::optional<Tone> Store::ToneByName(int64_t customerId, const std::string& filename)
{
    return ToneWhere(*mDb, kToneByName, {customerId, filename});
}

std::optional<Tone> Store::ToneById(int64_t customerId, int64_t toneId)
{
    return ToneWhere(*mDb, "WHERE id = ? AND customer_id = ?", {toneId, customerId});
}

int64_t Store::ToneCount()
{
    return mDb->Run("SELECT count(*) FROM tones").Int(0, 0);
}

std::vector<std::string> Store::TonePaths()
{
    const auto r = mDb->Run("SELECT path FROM tones");
    std::vector<std::string> paths;
    for (size_t i = 0; i < r.rows.size(); ++i)
        paths.push_back(r.Text(i, 0));
    return paths;
}

void Store::AddOutbox(sql::Runner& runner, const std::string& mobile, const std::string& text)
{
    runner.Run("INSERT INTO outbox(mobile, text) VALUES(?, ?)", {mobile, text});
}

void Store::AddOutbox(const std::string& mobile, const std::string& text)
{
    AddOutbox(*mDb, mobile, text);
}

std::vector<OutboxMessage> Store::Outbox(int limit)
{
    return MessageRows(
        mDb->Run("SELECT id, mobile, text, created FROM outbox ORDER BY id DESC LIMIT ?", {int64_t{limit}}));
}

std::vector<OutboxMessage> Store::OutboxOf(const std::string& mobile, int limit)
{
    return MessageRows(mDb->Run("SELECT id, mobile, text, created FROM outbox WHERE mobile = ? ORDER BY id DESC LIMIT ?",
                                {mobile, int64_t{limit}}));
}

std::optional<Tally> Store::TallyOf(const std::string& kind, const std::string& key)
{
    const auto r = mDb->Run("SELECT events, last_ms, until_ms FROM tallies WHERE kind = ? AND key = ?", {kind, key});
    if (r.Empty())
        return std::nullopt;
    return Tally{r.Int(0, 0), r.Int(0, 1), r.Int(0, 2)};
}

void Store::CountTally(const std::string& kind, const std::string& key, const std::function<void(Tally&)>& change)
{
    mDb->Transact([&](sql::Session& s) {
        const auto r = s.Run("SELECT events, last_ms, until_ms FROM tallies WHERE kind = ? AND key = ?", {kind, key});
        Tally t = r.Empty() ? Tally{} : Tally{r.Int(0, 0), r.Int(0, 1), r.Int(0, 2)};
        change(t);
        s.Run("INSERT INTO tallies(kind, key, events, last_ms, until_ms) VALUES(?, ?, ?, ?, ?) ON CONFLICT(kind, key)"
              " DO UPDATE SET events = excluded.events, last_ms = excluded.last_ms, until_ms = excluded.until_ms",
              {kind, key, t.events, t.lastMs, t.untilMs});
    });
}

void Store::ClearTally(const std::string& kind, const std::string& key)
{
    mDb->Run("DELETE FROM tallies WHERE kind = ? AND key = ?", {kind, key});
}

void Store::PruneTallies(const std::string& kind, int64_t quietSinceMs)
{
    mDb->Run("DELETE FROM tallies WHERE kind = ? AND last_ms < ? AND until_ms < ?", {kind, quietSinceMs, quietSinceMs});
}

void Store::PutReset(const std::string& mobile, const std::string& hash, int64_t expiresMs)
{
    mDb->Transact([&](sql::Session& s) {
        s.Run("DELETE FROM resets WHERE expires_ms <= ?", {NowMs()});
        s.Run("INSERT INTO resets(mobile, hash, expires_ms, tries) VALUES(?, ?, ?, 0) ON CONFLICT(mobile)"
              " DO UPDATE SET hash = excluded.hash, expires_ms = excluded.expires_ms, tries = 0",
              {mobile, hash, expiresMs});
    });
}

std::optional<std::string> Store::TryReset(const std::string& mobile, int64_t nowMs, int64_t maxTries)
{
    std::optional<std::string> hash;
    mDb->Transact([&](sql::Session& s) {
        const auto r = s.Run("UPDATE resets SET tries = tries + 1 WHERE mobile = ? RETURNING hash, expires_ms, tries",
                             {mobile});
        hash.reset();
        if (r.Empty())
            return;
        if (r.Int(0, 1) <= nowMs || r.Int(0, 2) > maxTries) {
            s.Run("DELETE FROM resets WHERE mobile = ?", {mobile});
            return;
        }
        hash = r.Text(0, 0);
    });
    return hash;
}

bool Store::TakeReset(const std::string& mobile, const std::string& hash)
{
    return mDb->Run("DELETE FROM resets WHERE mobile = ? AND hash = ?", {mobile, hash}).changed == 1;
}

bool Store::AddLink(const std::string& token, const std::string& mobile, int64_t expiresMs, int64_t nowMs,
                    int64_t maxOpen)
{
    bool added = false;
    mDb->Transact([&](sql::Session& s) {
        s.Run("DELETE FROM links WHERE expires_ms <= ?", {nowMs});
        added = s.Run("SELECT count(*) FROM links").Int(0, 0) < maxOpen;
        if (added)
            s.Run("INSERT INTO links(token, mobile, expires_ms) VALUES(?, ?, ?)", {token, mobile, expiresMs});
    });
    return added;
}

std::optional<std::string> Store::TakeLink(const std::string& token, int64_t nowMs)
{
    const auto r = mDb->Run("DELETE FROM links WHERE token = ? RETURNING mobile, expires_ms", {token});
    if (r.Empty() || r.Int(0, 1) <= nowMs)
        return std::nullopt;
    return r.Text(0, 0);
}
