// quillotone-service-load: drives a running service from several keep-alive
// TLS connections for a while and prints what it saw, one line:
//   requests=N failed=F seconds=S rate=R p50_ms=X p99_ms=Y
// usage: quillotone-service-load URL CA_FILE login|upload|slow|hostile MOBILE PASSWORD CONNECTIONS SECONDS
// An upload sends a 150 KB tone the way the program does; slow and hostile
// are the misbehaving clients of Attacks.h.
#include "Attacks.h"
#include "wire/ToneUpload.h"

#include <httplib.h>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {
constexpr size_t kToneBytes = 150000;
constexpr size_t kFieldChars = wire::kToneFieldChars;

// The tone fields of every upload; each upload names its own tone, since the
// service keeps one tone per name and customer.
std::string ToneFields()
{
    static const char digits[] = "0123456789ABCDEF";
    std::string hex;
    for (size_t i = 0; i < kToneBytes; ++i) {
        const auto b = static_cast<unsigned char>((i * 131 + 7) & 0xFF);
        hex += digits[b >> 4];
        hex += digits[b & 0xF];
    }
    std::string fields;
    for (size_t at = 0, n = 1; at < hex.size(); at += kFieldChars, ++n)
        fields += "&tonedata" + std::to_string(n) + "=" + hex.substr(at, kFieldChars);
    return fields;
}

std::string UploadBody(const std::string& mobile, const std::string& password, const std::string& toneName,
                       const std::string& toneFields)
{
    return "MobileNumber=" + mobile + "&Password=" + password +
           "&xmldata=%3CMessage+ContentType%3D%22audio%2Famr%22+Filename%3D%22" + toneName +
           ".amr%22+Status%3D%22Ready%22+MobileNumber%3D%22" + mobile + "%22%2F%3E" + toneFields;
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc != 8) {
        std::fprintf(stderr, "usage: %s URL CA_FILE login|upload|slow|hostile MOBILE PASSWORD CONNECTIONS SECONDS\n",
                     argv[0]);
        return 2;
    }
    const std::string url = argv[1], ca = argv[2], kind = argv[3], mobile = argv[4], password = argv[5];
    const int connections = std::stoi(argv[6]);
    const double seconds = std::stod(argv[7]);
    const bool upload = kind == "upload";
    const std::string toneFields = upload ? ToneFields() : std::string();
    std::atomic<long> sent{0};
    const std::string runName = std::to_string(std::chrono::system_clock::now().time_since_epoch().count());
    const std::string loginPath = "/Login.asp?MobileNumber=" + mobile + "&Password=" + password + "&Origin=0";

    // https://host:port/
    const auto hostStart = url.find("://") + 3;
    const auto colon = url.find(':', hostStart);
    const std::string host = url.substr(hostStart, colon - hostStart);
    const int port = std::stoi(url.substr(colon + 1));

    if (kind == "slow")
        return HoldSlowConnections(host, port, connections, seconds);
    if (kind == "hostile")
        return SendHostileRequests(host, port, connections);

    std::atomic<long> failed{0};
    std::mutex merge;
    std::vector<double> latencies;
    const auto start = std::chrono::steady_clock::now();
    const auto end = start + std::chrono::duration<double>(seconds);
    std::vector<std::thread> workers;
    for (int c = 0; c < connections; ++c) {
        workers.emplace_back([&] {
            httplib::SSLClient client(host, port);
            client.set_ca_cert_path(ca.c_str());
            client.enable_server_certificate_verification(true);
            client.set_keep_alive(true);
            client.set_read_timeout(10);
            std::vector<double> mine;
            while (std::chrono::steady_clock::now() < end) {
                const auto t0 = std::chrono::steady_clock::now();
                const auto res = upload ? client.Post("/SendT2.asp",
                                                      UploadBody(mobile, password, runName + "-" + std::to_string(++sent),
                                                                 toneFields),
                                                      "application/x-www-form-urlencoded")
                                        : client.Get(loginPath.c_str());
                const auto t1 = std::chrono::steady_clock::now();
                const bool ok = res && res->status == 200 && res->body.rfind("1,", 0) == 0 &&
                                (!upload || res->body.find(",https://") != std::string::npos);
                if (!ok)
                    ++failed;
                mine.push_back(std::chrono::duration<double, std::milli>(t1 - t0).count());
            }
            std::lock_guard lock(merge);
            latencies.insert(latencies.end(), mine.begin(), mine.end());
        });
    }
    for (auto& w : workers)
        w.join();
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::sort(latencies.begin(), latencies.end());
    const auto at = [&](double q) {
        return latencies.empty() ? 0.0 : latencies[std::min(latencies.size() - 1, size_t(q * latencies.size()))];
    };
    std::printf("requests=%zu failed=%ld seconds=%.3f rate=%.1f p50_ms=%.3f p99_ms=%.3f\n", latencies.size(),
                failed.load(), elapsed, latencies.size() / elapsed, at(0.50), at(0.99));
    return 0;
}
