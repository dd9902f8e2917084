#include "PostgresDatabase.h"

#include <libpq-fe.h>
#include <stdexcept>
#include <unordered_map>

namespace sql {
namespace {
constexpr unsigned kByteaType = 17;
constexpr int kConflictRetries = 20;

// Another transaction touched the same rows first: this one may run again.
struct Conflict : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// "?" marks as "$1", "$2"...; quoted text is left alone.
std::string Numbered(const std::string& statement)
{
    std::string out;
    int n = 0;
    bool quoted = false;
    for (const char c : statement) {
        if (c == '\'')
            quoted = !quoted;
        if (c == '?' && !quoted)
            out += "$" + std::to_string(++n);
        else
            out += c;
    }
    return out;
}
}  // namespace

class PostgresDatabase::Connection : public Session {
public:
    explicit Connection(const std::string& url) : mConn(PQconnectdb(url.c_str()))
    {
        if (PQstatus(mConn) != CONNECTION_OK) {
            const std::string reason = PQerrorMessage(mConn);
            PQfinish(mConn);
            throw std::runtime_error("cannot reach the database: " + reason);
        }
        // Notices ("already exists, skipping") are not the service's to print.
        PQsetNoticeProcessor(mConn, [](void*, const char*) {}, nullptr);
        // Timestamps are kept and read in UTC.
        Script("SET TIME ZONE 'UTC'");
    }
    ~Connection() override { PQfinish(mConn); }
    Connection(const Connection&) = delete;

    bool Broken() const { return PQstatus(mConn) != CONNECTION_OK; }
    void RollBack()
    {
        if (PQtransactionStatus(mConn) != PQTRANS_IDLE)
            PQclear(PQexec(mConn, "ROLLBACK"));
    }

    Result Run(const std::string& statement, const Values& values) override { return Run(statement, values, 0); }

    // resultFormat 1: every column as the server's binary form.
    Result Run(const std::string& statement, const Values& values, int resultFormat)
    {
        auto it = mPrepared.find(statement);
        if (it == mPrepared.end()) {
            const std::string name = "s" + std::to_string(mPrepared.size());
            Check(PQprepare(mConn, name.c_str(), Numbered(statement).c_str(), 0, nullptr));
            it = mPrepared.emplace(statement, name).first;
        }
        std::vector<std::string> texts(values.size());
        std::vector<const char*> pointers(values.size(), nullptr);
        std::vector<int> lengths(values.size(), 0), formats(values.size(), 0);
        for (size_t i = 0; i < values.size(); ++i) {
            if (const auto* n = std::get_if<int64_t>(&values[i])) {
                texts[i] = std::to_string(*n);
                pointers[i] = texts[i].c_str();
            } else if (const auto* text = std::get_if<std::string>(&values[i])) {
                pointers[i] = text->c_str();
            } else if (const auto* blob = std::get_if<Blob>(&values[i])) {
                pointers[i] = blob->bytes->data();
                lengths[i] = static_cast<int>(blob->bytes->size());
                formats[i] = 1;
            }
        }
        return Check(PQexecPrepared(mConn, it->second.c_str(), static_cast<int>(values.size()), pointers.data(),
                                    lengths.data(), formats.data(), resultFormat));
    }

    void Script(const std::string& statements) override { Check(PQexec(mConn, statements.c_str())); }

private:
    // The rows of a result that went well; throws for one that did not.
    Result Check(PGresult* res)
    {
        struct Clear {
            PGresult* res;
            ~Clear() { PQclear(res); }
        } clear{res};
        const auto status = PQresultStatus(res);
        if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
            const char* state = PQresultErrorField(res, PG_DIAG_SQLSTATE);
            const std::string message = res ? PQresultErrorMessage(res) : PQerrorMessage(mConn);
            // 40001: serialization failure, 40P01: deadlock.
            if (state && (std::string(state) == "40001" || std::string(state) == "40P01"))
                throw Conflict(message);
            throw std::runtime_error(message);
        }
        Result result;
        const int columns = PQnfields(res);
        for (int r = 0; r < PQntuples(res); ++r) {
            auto& row = result.rows.emplace_back();
            for (int c = 0; c < columns; ++c) {
                const char* value = PQgetvalue(res, r, c);
                if (PQftype(res, c) != kByteaType || PQfformat(res, c) != 0 || PQgetisnull(res, r, c)) {
                    row.emplace_back(value, static_cast<size_t>(PQgetlength(res, r, c)));
                    continue;
                }
                size_t length = 0;
                unsigned char* bytes = PQunescapeBytea(reinterpret_cast<const unsigned char*>(value), &length);
                row.emplace_back(reinterpret_cast<const char*>(bytes), length);
                PQfreemem(bytes);
            }
        }
        const char* changed = PQcmdTuples(res);
        result.changed = changed && *changed ? std::stoll(changed) : 0;
        return result;
    }

    PGconn* mConn;
    std::unordered_map<std::string, std::string> mPrepared;
};

// A connection lent for one piece of work; a broken one is not given back.
class PostgresDatabase::Lease {
public:
    explicit Lease(PostgresDatabase& db) : mDb(db)
    {
        std::unique_lock lock(mDb.mMutex);
        mDb.mReturned.wait(lock, [&] { return !mDb.mIdle.empty() || mDb.mOpen < mDb.mMaxConnections; });
        if (!mDb.mIdle.empty()) {
            mConnection = std::move(mDb.mIdle.back());
            mDb.mIdle.pop_back();
            return;
        }
        ++mDb.mOpen;
        lock.unlock();
        try {
            mConnection = std::make_unique<Connection>(mDb.mUrl);
        } catch (...) {
            Give();
            throw;
        }
    }
    ~Lease() { Give(); }
    Lease(const Lease&) = delete;
    Connection& operator*() { return *mConnection; }

private:
    void Give()
    {
        std::lock_guard lock(mDb.mMutex);
        if (mConnection && !mConnection->Broken())
            mDb.mIdle.push_back(std::move(mConnection));
        else
            --mDb.mOpen;
        mConnection.reset();
        mDb.mReturned.notify_one();
    }

    PostgresDatabase& mDb;
    std::unique_ptr<Connection> mConnection;
};

PostgresDatabase::PostgresDatabase(const std::string& url, size_t connections)
    : mUrl(url), mMaxConnections(connections)
{
    Lease first(*this);  // fails here, at start, when the server cannot be reached
}

PostgresDatabase::~PostgresDatabase() = default;

Result PostgresDatabase::Run(const std::string& statement, const Values& values)
{
    Lease lease(*this);
    return (*lease).Run(statement, values);
}

bool PostgresDatabase::TryTransaction(const char* begin, const std::function<void(Session&)>& work)
{
    Lease lease(*this);
    Connection& connection = *lease;
    try {
        connection.Script(begin);
        work(connection);
        connection.Script("COMMIT");
        return true;
    } catch (const Conflict&) {
        connection.RollBack();
        return false;
    } catch (...) {
        connection.RollBack();
        throw;
    }
}

std::optional<std::string> PostgresDatabase::FetchBytes(const std::string& statement, const Values& values)
{
    Lease lease(*this);
    Result result = (*lease).Run(statement, values, 1);
    if (result.Empty())
        return std::nullopt;
    return std::move(result.rows[0][0]);
}

void PostgresDatabase::Transact(const std::function<void(Session&)>& work)
{
    for (int attempt = 1; !TryTransaction("BEGIN ISOLATION LEVEL SERIALIZABLE", work); ++attempt) {
        if (attempt == kConflictRetries)
            throw std::runtime_error("the database was too busy with the same rows");
    }
}

void PostgresDatabase::TransactAlone(const std::function<void(Session&)>& work)
{
    // Processes that start together wait here for the first one's schema;
    // each statement after the lock sees what that one committed.
    if (!TryTransaction("BEGIN ISOLATION LEVEL READ COMMITTED; SELECT pg_advisory_xact_lock(7021541)", work))
        throw std::runtime_error("the schema could not be brought up to date");
}
}  // namespace sql
