#include "PageKit.h"

#include "Text.h"
#include "wire/Pages.h"

#include <httplib.h>

namespace page {
std::string Route(const char* page)
{
    return std::string("/") + page;
}

bool Has(const Params& params, const std::string& key)
{
    return params.find(key) != params.end();
}

std::string Get(const Params& params, const std::string& key)
{
    const auto it = params.find(key);
    if (it == params.end())
        throw BadRequest{"Missing field " + key};
    return text::FromWire(it->second);
}

std::string GetOr(const Params& params, const std::string& key)
{
    return Has(params, key) ? Get(params, key) : std::string();
}

int64_t Number(const Params& params, const std::string& key)
{
    const std::string value = text::Trim(Get(params, key));
    if (!text::IsDigits(value) || value.size() > 15)
        throw BadRequest{"Field " + key + " is not a number"};
    return std::stoll(value);
}

Handler Guarded(Handler handler)
{
    return [handler = std::move(handler)](const Request& req, Response& res) {
        try {
            handler(req, res);
        } catch (const BadRequest& bad) {
            res.status = 400;
            Reply(res, bad.message);
        }
    };
}

void Reply(Response& res, const std::string& utf8)
{
    res.set_content(text::ToWire(utf8), "text/plain; charset=windows-1252");
}

void Html(Response& res, const std::string& title, const std::string& body)
{
    res.set_content("<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>" + text::Html(title) +
                        "</title><style>body{font-family:sans-serif;max-width:50em;margin:2em auto;color:#223}"
                        "table{border-collapse:collapse}td,th{border:1px solid #ccd;padding:.3em .6em;"
                        "text-align:left;vertical-align:top}</style></head><body><h1>" +
                        text::Html(title) + "</h1>\n" + body +
                        "\n<p><a href=\"./\">Quillo Tone</a> &middot; <a href=\"" + wire::kHelp +
                        "\">Help</a> &middot; <a href=\"" + wire::kPassword +
                        "\">Forgotten password</a> &middot; <a href=\"" + wire::kOutbox +
                        "\">Outbox</a></p></body></html>\n",
                    "text/html; charset=utf-8");
}
}  // namespace page
