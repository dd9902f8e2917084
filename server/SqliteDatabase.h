#pragma once
// The embedded store: one SQLite file, one connection that serves every
// request thread in turn. Statements are prepared once and kept.
#include "Database.h"

#include <mutex>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace sql {
class SqliteDatabase : public Database, private Session {
public:
    explicit SqliteDatabase(const std::string& path);
    ~SqliteDatabase() override;

    Result Run(const std::string& statement, const Values& values = {}) override;
    void Transact(const std::function<void(Session&)>& work) override;
    std::optional<std::string> FetchBytes(const std::string& statement, const Values& values) override;
    bool Shared() const override { return false; }

private:
    void Script(const std::string& statements) override;
    // BEGIN IMMEDIATE already keeps every other writer out.
    void TransactAlone(const std::function<void(Session&)>& work) override { Transact(work); }
    sqlite3_stmt* Prepare(const std::string& statement);

    sqlite3* mDb = nullptr;
    std::recursive_mutex mMutex;
    std::unordered_map<std::string, sqlite3_stmt*> mStatements;
};
}  // namespace sql
