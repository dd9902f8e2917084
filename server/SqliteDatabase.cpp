#include "SqliteDatabase.h"

#include <ctime>
#include <sqlite3.h>
#include <stdexcept>

namespace sql {
namespace {
[[noreturn]] void Fail(sqlite3* db, const char* what)
{
    throw std::runtime_error(std::string(what) + ": " + sqlite3_errmsg(db));
}

// seconds_since(created): the age of a "YYYY-MM-DD HH:MM:SS" UTC timestamp.
void SecondsSince(sqlite3_context* context, int, sqlite3_value** arguments)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(arguments[0]));
    std::tm t{};
    if (!text || !strptime(text, "%Y-%m-%d %H:%M:%S", &t)) {
        sqlite3_result_null(context);
        return;
    }
    sqlite3_result_int64(context, static_cast<sqlite3_int64>(std::time(nullptr) - timegm(&t)));
}

// Resets the statement however the run ends.
struct Step {
    sqlite3_stmt* st;
    ~Step()
    {
        sqlite3_reset(st);
        sqlite3_clear_bindings(st);
    }
};
}  // namespace

SqliteDatabase::SqliteDatabase(const std::string& path)
{
    if (sqlite3_open_v2(path.c_str(), &mDb, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                        nullptr) != SQLITE_OK) {
        const std::string reason = mDb ? sqlite3_errmsg(mDb) : "out of memory";
        sqlite3_close(mDb);
        throw std::runtime_error("open: " + reason);
    }
    sqlite3_busy_timeout(mDb, 5000);
    sqlite3_create_function(mDb, "seconds_since", 1, SQLITE_UTF8, nullptr, SecondsSince, nullptr, nullptr);
    // WAL with NORMAL sync: a committed row survives the process ending at
    // any moment; only a power cut may take the last commits.
    Script("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=ON");
}

SqliteDatabase::~SqliteDatabase()
{
    for (auto& [text, st] : mStatements)
        sqlite3_finalize(st);
    sqlite3_close(mDb);
}

void SqliteDatabase::Script(const std::string& statements)
{
    std::lock_guard lock(mMutex);
    char* message = nullptr;
    if (sqlite3_exec(mDb, statements.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
        const std::string text = message ? message : "exec";
        sqlite3_free(message);
        throw std::runtime_error(text);
    }
}

sqlite3_stmt* SqliteDatabase::Prepare(const std::string& statement)
{
    auto it = mStatements.find(statement);
    if (it == mStatements.end()) {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v3(mDb, statement.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &st, nullptr) != SQLITE_OK)
            Fail(mDb, "prepare");
        it = mStatements.emplace(statement, st).first;
    }
    return it->second;
}

Result SqliteDatabase::Run(const std::string& statement, const Values& values)
{
    std::lock_guard lock(mMutex);
    Step step{Prepare(statement)};
    int i = 0;
    for (const Value& value : values) {
        ++i;
        int rc = SQLITE_OK;
        if (const auto* n = std::get_if<int64_t>(&value))
            rc = sqlite3_bind_int64(step.st, i, *n);
        else if (const auto* text = std::get_if<std::string>(&value))
            rc = sqlite3_bind_text(step.st, i, text->data(), static_cast<int>(text->size()), SQLITE_TRANSIENT);
        else if (const auto* blob = std::get_if<Blob>(&value))
            rc = sqlite3_bind_blob64(step.st, i, blob->bytes->data(), blob->bytes->size(), SQLITE_TRANSIENT);
        else
            rc = sqlite3_bind_null(step.st, i);
        if (rc != SQLITE_OK)
            Fail(mDb, "bind");
    }
    Result result;
    const int columns = sqlite3_column_count(step.st);
    for (;;) {
        const int rc = sqlite3_step(step.st);
        if (rc == SQLITE_DONE)
            break;
        if (rc != SQLITE_ROW)
            Fail(mDb, "step");
        auto& row = result.rows.emplace_back();
        for (int c = 0; c < columns; ++c) {
            const auto* p = static_cast<const char*>(sqlite3_column_blob(step.st, c));
            row.emplace_back(p ? std::string(p, static_cast<size_t>(sqlite3_column_bytes(step.st, c))) : std::string());
        }
    }
    result.changed = sqlite3_changes(mDb);
    return result;
}

std::optional<std::string> SqliteDatabase::FetchBytes(const std::string& statement, const Values& values)
{
    Result result = Run(statement, values);
    if (result.Empty())
        return std::nullopt;
    return std::move(result.rows[0][0]);
}

void SqliteDatabase::Transact(const std::function<void(Session&)>& work)
{
    std::lock_guard lock(mMutex);
    Script("BEGIN IMMEDIATE");
    try {
        work(*this);
        Script("COMMIT");
    } catch (...) {
        sqlite3_exec(mDb, "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}
}  // namespace sql
