#include "Attacks.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {
int Open(const std::string& host, int port, const std::string& from)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in local{};
    local.sin_family = AF_INET;
    inet_pton(AF_INET, from.c_str(), &local.sin_addr);
    sockaddr_in remote{};
    remote.sin_family = AF_INET;
    remote.sin_port = htons(static_cast<uint16_t>(port));
    inet_pton(AF_INET, host.c_str(), &remote.sin_addr);
    if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr*>(&local), sizeof local) != 0 ||
        ::connect(fd, reinterpret_cast<sockaddr*>(&remote), sizeof remote) != 0) {
        if (fd >= 0)
            ::close(fd);
        return -1;
    }
    timeval wait{10, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait);
    return fd;
}

struct Hostile {
    std::string head;
    std::string unit;  // the body, repeated
    size_t repeat;
    std::string expected;  // the start of the reply
};

// One request over its own TLS connection; true when refused as expected.
bool SendOne(SSL_CTX* tls, const std::string& host, int port, const Hostile& h)
{
    const int fd = Open(host, port, "127.0.0.1");
    if (fd < 0)
        return false;
    SSL* ssl = SSL_new(tls);
    SSL_set_fd(ssl, fd);
    bool ok = SSL_connect(ssl) == 1 && SSL_write(ssl, h.head.data(), static_cast<int>(h.head.size())) > 0;
    // The body in slices, until the service answers.
    std::string slice;
    while (slice.size() < 65536 && !h.unit.empty())
        slice += h.unit;
    for (size_t sent = 0; ok && sent < h.repeat * h.unit.size();) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 0) > 0)
            break;
        const size_t n = std::min(slice.size(), h.repeat * h.unit.size() - sent);
        ok = SSL_write(ssl, slice.data(), static_cast<int>(n)) > 0;
        sent += n;
    }
    std::string reply;
    char buffer[16384];
    size_t body = std::string::npos;
    for (int n; (n = SSL_read(ssl, buffer, sizeof buffer)) > 0;) {
        reply.append(buffer, static_cast<size_t>(n));
        body = reply.find("\r\n\r\n");
        const size_t length = reply.find("Content-Length: ");
        if (body != std::string::npos && length < body &&
            reply.size() >= body + 4 + std::stoul(reply.substr(length + 16)))
            break;
    }
    SSL_free(ssl);
    ::close(fd);
    return body != std::string::npos && reply.compare(body + 4, h.expected.size(), h.expected) == 0;
}
}  // namespace

int HoldSlowConnections(const std::string& host, int port, int connections, double seconds)
{
    std::vector<int> fds(static_cast<size_t>(connections), -1);
    const auto from = [](size_t i) { return "127.0.0." + std::to_string(10 + i / 50); };
    long reopened = -connections;
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    bool announced = false;
    while (std::chrono::steady_clock::now() < end) {
        for (size_t i = 0; i < fds.size(); ++i) {
            if (fds[i] < 0) {
                fds[i] = Open(host, port, from(i));
                ++reopened;
                continue;
            }
            // Closed by the service, or one more byte of a handshake record.
            pollfd p{fds[i], POLLIN, 0};
            char b;
            if ((::poll(&p, 1, 0) > 0 && ::recv(fds[i], &b, 1, MSG_DONTWAIT) <= 0) ||
                ::send(fds[i], "\x16", 1, MSG_NOSIGNAL | MSG_DONTWAIT) != 1) {
                ::close(fds[i]);
                fds[i] = -1;
            }
        }
        if (!announced) {
            std::printf("holding\n");
            std::fflush(stdout);
            announced = true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    long held = 0;
    for (const int fd : fds) {
        held += fd >= 0;
        if (fd >= 0)
            ::close(fd);
    }
    std::printf("held=%ld reopened=%ld\n", held, reopened);
    return 0;
}

int SendHostileRequests(const std::string& host, int port, int connections)
{
    const std::vector<Hostile> kinds{
        {"POST /SendT2.asp HTTP/1.1\r\nHost: x\r\nContent-Length: 4194304\r\n\r\n", "&", 4194304, "0,"},
        {"POST /SendT2.asp HTTP/1.1\r\nHost: x\r\nContent-Length: 1000000000\r\n\r\n", "", 0, "0,5,"},
        {"POST /Login.asp HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n",
         "10000\r\n" + std::string(0x10000, 'a') + "\r\n", 8000, "The request"},
        {"GET /Login.asp HTTP/1.1\r\nHost: x\r\n", "X-A: b\r\n", 1000000, "The request"},
    };
    SSL_CTX* tls = SSL_CTX_new(TLS_client_method());
    std::atomic<int> next{0}, failed{0};
    const int total = 100 * static_cast<int>(kinds.size());
    std::vector<std::thread> workers;
    for (int c = 0; c < connections; ++c) {
        workers.emplace_back([&] {
            for (int i; (i = next++) < total;) {
                if (!SendOne(tls, host, port, kinds[static_cast<size_t>(i) % kinds.size()]))
                    ++failed;
            }
        });
    }
    for (auto& w : workers)
        w.join();
    SSL_CTX_free(tls);
    std::printf("requests=%d failed=%d\n", total, failed.load());
    return 0;
}
