#include "Store.h"

#include "Seeds.h"

#include <sqlite3.h>
#include <stdexcept>

namespace {
[[noreturn]] void Fail(sqlite3* db, const char* what)
{
    throw std::runtime_error(std::string(what) + ": " + sqlite3_errmsg(db));
}

const char* const kSchema = R"(
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

const char* const kCustomerColumns =
    "SELECT id, mobile, first_name, last_name, gender, email, password_hash, age, country_id, vendor_id, model_id,"
    " provider_id, receive_marketing, partner_id, activation_code, activated, free_quills, preferred_format,"
    " charge_text, activation_tries, CAST(strftime('%s', 'now') - strftime('%s', created) AS INTEGER)"
    " FROM customers ";
}  // namespace

class Store::Query {
public:
    Query(sqlite3* db, sqlite3_stmt* st) : mDb(db), mSt(st) {}
    Query(const Query&) = delete;
    ~Query()
    {
        sqlite3_reset(mSt);
        sqlite3_clear_bindings(mSt);
    }
    Query& Bind(int i, const std::string& v)
    {
        Check(sqlite3_bind_text(mSt, i, v.data(), static_cast<int>(v.size()), SQLITE_TRANSIENT));
        return *this;
    }
    Query& Bind(int i, int64_t v)
    {
        Check(sqlite3_bind_int64(mSt, i, v));
        return *this;
    }
    // True while there is a row.
    bool Next()
    {
        const int rc = sqlite3_step(mSt);
        if (rc == SQLITE_ROW)
            return true;
        if (rc == SQLITE_DONE)
            return false;
        Fail(mDb, "step");
    }
    void Run()
    {
        while (Next()) {
        }
    }
    // False when a constraint refused the row.
    bool TryRun()
    {
        const int rc = sqlite3_step(mSt);
        if (rc == SQLITE_CONSTRAINT)
            return false;
        if (rc != SQLITE_DONE && rc != SQLITE_ROW)
            Fail(mDb, "step");
        return true;
    }
    std::string Text(int col)
    {
        const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(mSt, col));
        return p ? std::string(p, static_cast<size_t>(sqlite3_column_bytes(mSt, col))) : std::string();
    }
    int64_t Int(int col) { return sqlite3_column_int64(mSt, col); }

private:
    void Check(int rc)
    {
        if (rc != SQLITE_OK)
            Fail(mDb, "bind");
    }
    sqlite3* mDb;
    sqlite3_stmt* mSt;
};

// BEGIN IMMEDIATE ... COMMIT, rolled back if left by an exception.
class Store::Transaction {
public:
    explicit Transaction(Store& s) : mStore(s) { mStore.Exec("BEGIN IMMEDIATE"); }
    Transaction(const Transaction&) = delete;
    ~Transaction()
    {
        if (!mDone)
            sqlite3_exec(mStore.mDb, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    void Commit()
    {
        mStore.Exec("COMMIT");
        mDone = true;
    }

private:
    Store& mStore;
    bool mDone = false;
};

Store::Store(const std::string& path)
{
    if (sqlite3_open_v2(path.c_str(), &mDb, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                        nullptr) != SQLITE_OK)
        Fail(mDb, "open");
    sqlite3_busy_timeout(mDb, 5000);
    // WAL with NORMAL sync: a committed row survives the process ending at
    // any moment; only a power cut may take the last commits.
    Exec("PRAGMA journal_mode=WAL");
    Exec("PRAGMA synchronous=NORMAL");
    Exec("PRAGMA foreign_keys=ON");
    Exec(kSchema);
    // Databases made before wrong activation codes were counted.
    if (sqlite3_exec(mDb, "SELECT activation_tries FROM customers LIMIT 0", nullptr, nullptr, nullptr) != SQLITE_OK)
        Exec("ALTER TABLE customers ADD COLUMN activation_tries INTEGER NOT NULL DEFAULT 0");
    if (Countries().empty()) {
        Transaction t(*this);
        Exec(kSeedSql);
        t.Commit();
    }
}

Store::~Store()
{
    for (auto& [sql, st] : mStatements)
        sqlite3_finalize(st);
    sqlite3_close(mDb);
}

void Store::Exec(const char* sql)
{
    char* message = nullptr;
    if (sqlite3_exec(mDb, sql, nullptr, nullptr, &message) != SQLITE_OK) {
        const std::string text = message ? message : "exec";
        sqlite3_free(message);
        throw std::runtime_error(text);
    }
}

Store::Query Store::Prepare(const char* sql)
{
    auto it = mStatements.find(sql);
    if (it == mStatements.end()) {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v3(mDb, sql, -1, SQLITE_PREPARE_PERSISTENT, &st, nullptr) != SQLITE_OK)
            Fail(mDb, "prepare");
        it = mStatements.emplace(sql, st).first;
    }
    return Query(mDb, it->second);
}

namespace {
template <class Q>
std::vector<NamedId> NamedRows(Q&& q)
{
    std::vector<NamedId> rows;
    while (q.Next())
        rows.push_back({q.Int(0), q.Text(1)});
    return rows;
}
}  // namespace

std::vector<NamedId> Store::Countries()
{
    std::lock_guard lock(mMutex);
    return NamedRows(Prepare("SELECT id, name FROM countries ORDER BY name"));
}

std::vector<NamedId> Store::Vendors()
{
    std::lock_guard lock(mMutex);
    return NamedRows(Prepare("SELECT id, name FROM vendors ORDER BY name"));
}

std::vector<NamedId> Store::Models(int64_t vendorId)
{
    std::lock_guard lock(mMutex);
    return NamedRows(Prepare("SELECT id, name FROM models WHERE vendor_id = ? ORDER BY name").Bind(1, vendorId));
}

std::vector<Provider> Store::Providers(std::optional<int64_t> countryId)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT id, country_id, name, prefix, min_length, max_length FROM providers"
                      " WHERE ?1 IS NULL OR country_id = ?1 ORDER BY name");
    if (countryId)
        q.Bind(1, *countryId);
    std::vector<Provider> rows;
    while (q.Next())
        rows.push_back({q.Int(0), q.Int(1), q.Text(2), q.Text(3), q.Int(4), q.Int(5)});
    return rows;
}

std::optional<Country> Store::CountryById(int64_t id)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT id, name, dial_code, charge_text FROM countries WHERE id = ?");
    q.Bind(1, id);
    if (!q.Next())
        return std::nullopt;
    return Country{q.Int(0), q.Text(1), q.Text(2), q.Text(3)};
}

std::optional<Provider> Store::ProviderById(int64_t id)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT id, country_id, name, prefix, min_length, max_length FROM providers WHERE id = ?");
    q.Bind(1, id);
    if (!q.Next())
        return std::nullopt;
    return Provider{q.Int(0), q.Int(1), q.Text(2), q.Text(3), q.Int(4), q.Int(5)};
}

std::optional<PhoneModel> Store::ModelById(int64_t id)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT id, vendor_id, name, format FROM models WHERE id = ?");
    q.Bind(1, id);
    if (!q.Next())
        return std::nullopt;
    return PhoneModel{q.Int(0), q.Int(1), q.Text(2), q.Text(3)};
}

std::optional<Customer> Store::CustomerWhere(const char* sql, const std::string& key, int64_t id)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare(sql);
    if (key.empty())
        q.Bind(1, id);
    else
        q.Bind(1, key);
    if (!q.Next())
        return std::nullopt;
    Customer c;
    c.id = q.Int(0);
    c.mobile = q.Text(1);
    c.firstName = q.Text(2);
    c.lastName = q.Text(3);
    c.gender = q.Text(4);
    c.email = q.Text(5);
    c.passwordHash = q.Text(6);
    c.age = q.Int(7);
    c.countryId = q.Int(8);
    c.vendorId = q.Int(9);
    c.modelId = q.Int(10);
    c.providerId = q.Int(11);
    c.receiveMarketing = q.Int(12) != 0;
    c.partnerId = q.Text(13);
    c.activationCode = q.Text(14);
    c.activated = q.Int(15) != 0;
    c.freeQuills = q.Int(16);
    c.preferredFormat = q.Text(17);
    c.chargeText = q.Text(18);
    c.activationTries = q.Int(19);
    c.ageSeconds = q.Int(20);
    return c;
}

std::optional<Customer> Store::CustomerByMobile(const std::string& mobile)
{
    static const std::string sql = std::string(kCustomerColumns) + "WHERE mobile = ?";
    if (mobile.empty())
        return std::nullopt;
    return CustomerWhere(sql.c_str(), mobile, 0);
}

std::optional<Customer> Store::CustomerById(int64_t id)
{
    static const std::string sql = std::string(kCustomerColumns) + "WHERE id = ?";
    return CustomerWhere(sql.c_str(), {}, id);
}

std::optional<int64_t> Store::AddCustomer(const Customer& c, int64_t pendingLifetime)
{
    std::lock_guard lock(mMutex);
    Transaction t(*this);
    Prepare("DELETE FROM customers WHERE mobile = ? AND activated = 0"
            " AND strftime('%s', 'now') - strftime('%s', created) >= ?")
        .Bind(1, c.mobile)
        .Bind(2, pendingLifetime)
        .Run();
    Query q = Prepare(
        "INSERT INTO customers(mobile, first_name, last_name, gender, email, password_hash, age, country_id,"
        " vendor_id, model_id, provider_id, receive_marketing, partner_id, activation_code, activated, free_quills,"
        " preferred_format, charge_text) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    q.Bind(1, c.mobile).Bind(2, c.firstName).Bind(3, c.lastName).Bind(4, c.gender).Bind(5, c.email);
    q.Bind(6, c.passwordHash).Bind(7, c.age).Bind(8, c.countryId).Bind(9, c.vendorId).Bind(10, c.modelId);
    q.Bind(11, c.providerId).Bind(12, int64_t{c.receiveMarketing}).Bind(13, c.partnerId).Bind(14, c.activationCode);
    q.Bind(15, int64_t{c.activated}).Bind(16, c.freeQuills).Bind(17, c.preferredFormat).Bind(18, c.chargeText);
    if (!q.TryRun())
        return std::nullopt;
    const int64_t id = sqlite3_last_insert_rowid(mDb);
    t.Commit();
    return id;
}

Store::Activation Store::Activate(int64_t customerId, const std::string& code, const std::string& welcome,
                                  int64_t maxTries, int64_t lifetime)
{
    std::lock_guard lock(mMutex);
    Transaction t(*this);
    Query open = Prepare("SELECT activation_code = ? FROM customers WHERE id = ? AND activated = 0"
                         " AND activation_tries < ? AND strftime('%s', 'now') - strftime('%s', created) < ?");
    open.Bind(1, code).Bind(2, customerId).Bind(3, maxTries).Bind(4, lifetime);
    if (!open.Next())
        return Activation::Refused;
    if (open.Int(0) == 0) {
        open.Run();
        Prepare("UPDATE customers SET activation_tries = activation_tries + 1 WHERE id = ?").Bind(1, customerId).Run();
        t.Commit();
        return Activation::WrongCode;
    }
    open.Run();
    Query q = Prepare("UPDATE customers SET activated = 1 WHERE id = ? RETURNING mobile, first_name");
    q.Bind(1, customerId);
    q.Next();
    const std::string mobile = q.Text(0);
    const std::string firstName = q.Text(1);
    q.Run();
    AddAnnouncement(customerId, welcome);
    // The first friend who referred this number earns a free quill, and hears of it.
    Query r = Prepare("UPDATE referrals SET rewarded = 1 WHERE id = (SELECT id FROM referrals WHERE mobile = ?"
                      " AND rewarded = 0 ORDER BY id LIMIT 1) RETURNING customer_id");
    r.Bind(1, mobile);
    if (r.Next()) {
        const int64_t referrer = r.Int(0);
        r.Run();
        Prepare("UPDATE customers SET free_quills = free_quills + 1 WHERE id = ?").Bind(1, referrer).Run();
        AddAnnouncement(referrer, "Your friend " + firstName +
                                      " has joined Quillo Tone. Thanks for the tip: one more free quill is yours!");
    }
    t.Commit();
    return Activation::Done;
}

void Store::SetPassword(int64_t customerId, const std::string& hash)
{
    std::lock_guard lock(mMutex);
    Prepare("UPDATE customers SET password_hash = ? WHERE id = ?").Bind(1, hash).Bind(2, customerId).Run();
}

void Store::SetModel(int64_t customerId, int64_t modelId, const std::string& format)
{
    std::lock_guard lock(mMutex);
    Prepare("UPDATE customers SET model_id = ?, preferred_format = ? WHERE id = ?")
        .Bind(1, modelId)
        .Bind(2, format)
        .Bind(3, customerId)
        .Run();
}

void Store::AddAnnouncement(int64_t customerId, const std::string& text)
{
    std::lock_guard lock(mMutex);
    Prepare("INSERT INTO announcements(customer_id, text) VALUES(?, ?)").Bind(1, customerId).Bind(2, text).Run();
}

std::optional<std::string> Store::TakeAnnouncement(int64_t customerId)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("UPDATE announcements SET read = 1 WHERE id = (SELECT id FROM announcements"
                      " WHERE customer_id = ? AND read = 0 ORDER BY id LIMIT 1) RETURNING text");
    q.Bind(1, customerId);
    if (!q.Next())
        return std::nullopt;
    std::string text = q.Text(0);
    q.Run();
    return text;
}

int64_t Store::ReferralCount(int64_t customerId)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT count(*) FROM referrals WHERE customer_id = ?");
    q.Bind(1, customerId);
    return q.Next() ? q.Int(0) : 0;
}

bool Store::WasReferred(const std::string& mobile)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT 1 FROM referrals WHERE mobile = ? LIMIT 1");
    q.Bind(1, mobile);
    return q.Next();
}

void Store::AddReferral(int64_t customerId, const std::string& firstName, const std::string& mobile)
{
    std::lock_guard lock(mMutex);
    Prepare("INSERT INTO referrals(customer_id, first_name, mobile) VALUES(?, ?, ?)")
        .Bind(1, customerId)
        .Bind(2, firstName)
        .Bind(3, mobile)
        .Run();
}

void Store::AddSongReport(const std::string& customerId, const std::string& blob)
{
    std::lock_guard lock(mMutex);
    Prepare("INSERT INTO song_reports(customer_id, blob) VALUES(?, ?)").Bind(1, customerId).Bind(2, blob).Run();
}

Tone Store::AddTone(const Tone& tone, const std::string& mobile, const std::string& message)
{
    std::lock_guard lock(mMutex);
    if (auto sent = ToneByName(tone.customerId, tone.filename))
        return *sent;
    Transaction t(*this);
    // A free quill pays if one is left; otherwise the tone is charged.
    Query spend = Prepare("UPDATE customers SET free_quills = free_quills - 1 WHERE id = ? AND free_quills > 0");
    spend.Bind(1, tone.customerId).Run();
    const bool charged = sqlite3_changes(mDb) == 0;
    Prepare("INSERT INTO tones(customer_id, token, content_type, filename, path, size, charged)"
            " VALUES(?,?,?,?,?,?,?)")
        .Bind(1, tone.customerId)
        .Bind(2, tone.token)
        .Bind(3, tone.contentType)
        .Bind(4, tone.filename)
        .Bind(5, tone.path)
        .Bind(6, tone.size)
        .Bind(7, int64_t{charged})
        .Run();
    Tone added = tone;
    added.id = sqlite3_last_insert_rowid(mDb);
    AddOutbox(mobile, message);
    t.Commit();
    return added;
}

namespace {
const char* const kToneColumns = "SELECT id, customer_id, size, token, content_type, filename, path FROM tones ";
}

std::optional<Tone> Store::ToneByToken(const std::string& token)
{
    static const std::string sql = std::string(kToneColumns) + "WHERE token = ?";
    std::lock_guard lock(mMutex);
    Query q = Prepare(sql.c_str());
    q.Bind(1, token);
    if (!q.Next())
        return std::nullopt;
    return Tone{q.Int(0), q.Int(1), q.Int(2), q.Text(3), q.Text(4), q.Text(5), q.Text(6)};
}

std::optional<Tone> Store::ToneByName(int64_t customerId, const std::string& filename)
{
    static const std::string sql = std::string(kToneColumns) + "WHERE customer_id = ? AND filename = ? LIMIT 1";
    std::lock_guard lock(mMutex);
    Query q = Prepare(sql.c_str());
    q.Bind(1, customerId).Bind(2, filename);
    if (!q.Next())
        return std::nullopt;
    Tone t{q.Int(0), q.Int(1), q.Int(2), q.Text(3), q.Text(4), q.Text(5), q.Text(6)};
    q.Run();
    return t;
}

std::optional<Tone> Store::ToneById(int64_t customerId, int64_t toneId)
{
    static const std::string sql = std::string(kToneColumns) + "WHERE id = ? AND customer_id = ?";
    std::lock_guard lock(mMutex);
    Query q = Prepare(sql.c_str());
    q.Bind(1, toneId).Bind(2, customerId);
    if (!q.Next())
        return std::nullopt;
    return Tone{q.Int(0), q.Int(1), q.Int(2), q.Text(3), q.Text(4), q.Text(5), q.Text(6)};
}

int64_t Store::ToneCount()
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT count(*) FROM tones");
    return q.Next() ? q.Int(0) : 0;
}

std::vector<std::string> Store::TonePaths()
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT path FROM tones");
    std::vector<std::string> paths;
    while (q.Next())
        paths.push_back(q.Text(0));
    return paths;
}

void Store::AddOutbox(const std::string& mobile, const std::string& text)
{
    std::lock_guard lock(mMutex);
    Prepare("INSERT INTO outbox(mobile, text) VALUES(?, ?)").Bind(1, mobile).Bind(2, text).Run();
}

std::vector<OutboxMessage> Store::Outbox(int limit)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT id, mobile, text, created FROM outbox ORDER BY id DESC LIMIT ?");
    q.Bind(1, int64_t{limit});
    std::vector<OutboxMessage> rows;
    while (q.Next())
        rows.push_back({q.Int(0), q.Text(1), q.Text(2), q.Text(3)});
    return rows;
}

std::vector<OutboxMessage> Store::OutboxOf(const std::string& mobile, int limit)
{
    std::lock_guard lock(mMutex);
    Query q = Prepare("SELECT id, mobile, text, created FROM outbox WHERE mobile = ? ORDER BY id DESC LIMIT ?");
    q.Bind(1, mobile).Bind(2, int64_t{limit});
    std::vector<OutboxMessage> rows;
    while (q.Next())
        rows.push_back({q.Int(0), q.Text(1), q.Text(2), q.Text(3)});
    return rows;
}
