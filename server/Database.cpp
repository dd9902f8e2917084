#include "Database.h"

#include "PostgresDatabase.h"
#include "SqliteDatabase.h"

#include <stdexcept>

namespace sql {
int64_t Result::Int(size_t row, size_t column) const
{
    const std::string& text = Text(row, column);
    return text.empty() ? 0 : std::stoll(text);
}

void Database::Migrate(const std::vector<std::string>& steps, const std::function<void(Session&)>& then)
{
    TransactAlone([&](Session& session) {
        session.Run("CREATE TABLE IF NOT EXISTS schema_version(version INTEGER NOT NULL)");
        const Result found = session.Run("SELECT version FROM schema_version");
        if (found.Empty())
            session.Run("INSERT INTO schema_version(version) VALUES(0)");
        const int64_t version = found.Empty() ? 0 : found.Int(0, 0);
        if (version > static_cast<int64_t>(steps.size()))
            throw std::runtime_error("the database was made by a newer version of the service");
        for (auto step = steps.begin() + version; step != steps.end(); ++step)
            session.Script(*step);
        session.Run("UPDATE schema_version SET version = ?", {static_cast<int64_t>(steps.size())});
        then(session);
    });
}

std::unique_ptr<Database> Open(const std::string& url)
{
    if (url.rfind("sqlite:", 0) == 0)
        return std::make_unique<SqliteDatabase>(url.substr(7));
    if (url.rfind("postgresql://", 0) == 0 || url.rfind("postgres://", 0) == 0)
        return std::make_unique<PostgresDatabase>(url);
    throw std::runtime_error("the store wants sqlite:PATH or a postgresql:// URL");
}
}  // namespace sql
