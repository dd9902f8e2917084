#pragma once
// What every page shares: reading query and form fields, and answering in the
// program's plain text or as an HTML page for people.
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace httplib {
struct Request;
struct Response;
}  // namespace httplib

namespace page {
using Request = httplib::Request;
using Response = httplib::Response;
using Params = std::multimap<std::string, std::string>;

// A request the service will not read: missing or malformed fields.
struct BadRequest {
    std::string message;
};

bool Has(const Params& params, const std::string& key);
// The field as UTF-8; BadRequest when it is missing.
std::string Get(const Params& params, const std::string& key);
// The field, or empty when it is missing.
std::string GetOr(const Params& params, const std::string& key);
// A whole number of up to 15 digits; BadRequest otherwise.
int64_t Number(const Params& params, const std::string& key);

// The route of a page of wire/Pages.h: "/" and its name.
std::string Route(const char* page);

using Handler = std::function<void(const Request&, Response&)>;
// The handler, with a BadRequest answered as 400 and its message.
Handler Guarded(Handler handler);

// Plain text in the program's code page.
void Reply(Response& res, const std::string& utf8);
// An HTML page with the service's links under it; body is HTML already.
void Html(Response& res, const std::string& title, const std::string& body);

// The address a stored tone is fetched from.
inline std::string ToneLink(const std::string& base, const std::string& token)
{
    return base + "tones/" + token;
}
}  // namespace page
