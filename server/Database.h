#pragma once
// The database under the store: SQLite in the data folder (one process), or a
// PostgreSQL server that any number of service processes share. The store's
// statements are the same on both: "?" marks each bound parameter, and
// seconds_since(column) is the age of a timestamp column in seconds.
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace sql {
// Bytes for a blob column, as against text.
struct Blob {
    const std::string* bytes = nullptr;
};
using Value = std::variant<std::nullptr_t, int64_t, std::string, Blob>;
using Values = std::vector<Value>;

// The rows a statement returned, every column as text (NULL as empty), and
// how many rows it changed.
struct Result {
    std::vector<std::vector<std::string>> rows;
    int64_t changed = 0;

    bool Empty() const { return rows.empty(); }
    const std::string& Text(size_t row, size_t column) const { return rows.at(row).at(column); }
    int64_t Int(size_t row, size_t column) const;
};

// Runs one statement: on a database, committed at once; in a session, as
// part of its transaction.
class Runner {
public:
    virtual ~Runner() = default;
    virtual Result Run(const std::string& statement, const Values& values = {}) = 0;
};

// One connection, inside a transaction.
class Session : public Runner {
public:
    // Statements without parameters, separated by ";".
    virtual void Script(const std::string& statements) = 0;
};

class Database : public Runner {
public:
    // The work in one transaction, committed when it returns. Another process
    // may make it conflict: it then runs again from the start, so it must
    // only read and write through the session and its own locals.
    virtual void Transact(const std::function<void(Session&)>& work) = 0;
    // Brings the schema to the last of these steps, each run once, in order,
    // whatever number of processes start at once; then, in the same
    // transaction, the work (filling what is empty).
    void Migrate(const std::vector<std::string>& steps, const std::function<void(Session&)>& then);
    // The first column of the first row, as the bytes stored (a large blob
    // comes whole, without a text form on the way); none without a row.
    virtual std::optional<std::string> FetchBytes(const std::string& statement, const Values& values) = 0;
    // True when several processes share the database: then it keeps what
    // they all must see, the tones' bytes among them.
    virtual bool Shared() const = 0;

protected:
    // The work in one transaction that no other process's Migrate runs beside.
    virtual void TransactAlone(const std::function<void(Session&)>& work) = 0;
};

// "sqlite:PATH" or a PostgreSQL URL ("postgresql://user@host/db"); throws
// std::runtime_error with the reason when it cannot be opened.
std::unique_ptr<Database> Open(const std::string& url);
}  // namespace sql
