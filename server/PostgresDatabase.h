#pragma once
// The shared store: a PostgreSQL server, through libpq. A few connections are
// kept open and lent to one request at a time; each keeps its statements
// prepared. Transactions run SERIALIZABLE, so that processes that touch the
// same rows at once behave as if one came after the other.
#include "Database.h"

#include <condition_variable>
#include <mutex>

namespace sql {
class PostgresDatabase : public Database {
public:
    explicit PostgresDatabase(const std::string& url, size_t connections = 8);
    ~PostgresDatabase() override;

    Result Run(const std::string& statement, const Values& values = {}) override;
    void Transact(const std::function<void(Session&)>& work) override;
    std::optional<std::string> FetchBytes(const std::string& statement, const Values& values) override;
    bool Shared() const override { return true; }

private:
    class Connection;
    class Lease;
    void TransactAlone(const std::function<void(Session&)>& work) override;
    // One run of the work in a transaction that begin starts; false when it
    // collided with another and was rolled back.
    bool TryTransaction(const char* begin, const std::function<void(Session&)>& work);

    const std::string mUrl;
    const size_t mMaxConnections;
    std::mutex mMutex;
    std::condition_variable mReturned;
    std::vector<std::unique_ptr<Connection>> mIdle;
    size_t mOpen = 0;
};
}  // namespace sql
