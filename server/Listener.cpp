#include "Listener.h"

#include <openssl/err.h>
#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <netdb.h>
#include <poll.h>
#include <sys/epoll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {
using Clock = std::chrono::steady_clock;
constexpr uint64_t kListenId = 0;
constexpr uint64_t kWakeId = 1;

// A complete request held in memory, head and body, and the reply it gets.
class MemoryStream : public httplib::Stream {
public:
    MemoryStream(const std::string& head, const std::string& body, std::string& out, const std::string& ip, int port)
        : mHead(head), mBody(body), mOut(out), mIp(ip), mPort(port)
    {
    }
    bool is_readable() const override { return mAt < mHead.size() + mBody.size(); }
    bool is_writable() const override { return true; }
    ssize_t read(char* ptr, size_t size) override
    {
        const std::string& from = mAt < mHead.size() ? mHead : mBody;
        const size_t at = mAt < mHead.size() ? mAt : mAt - mHead.size();
        size = std::min(size, from.size() - at);
        std::memcpy(ptr, from.data() + at, size);
        mAt += size;
        return static_cast<ssize_t>(size);
    }
    ssize_t write(const char* ptr, size_t size) override
    {
        mOut.append(ptr, size);
        return static_cast<ssize_t>(size);
    }
    void get_remote_ip_and_port(std::string& ip, int& port) const override
    {
        ip = mIp;
        port = mPort;
    }
    void get_local_ip_and_port(std::string& ip, int& port) const override
    {
        ip.clear();
        port = 0;
    }
    // Only ever compared with FD_SETSIZE by the library.
    socket_t socket() const override { return 0; }

private:
    const std::string& mHead;
    const std::string& mBody;
    std::string& mOut;
    const std::string& mIp;
    int mPort;
    size_t mAt = 0;
};

std::string Lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::tolower(c); });
    return s;
}

std::string Trim(std::string_view s)
{
    const auto first = s.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return std::string(s.substr(first, s.find_last_not_of(" \t") - first + 1));
}

const char* Reason(int status)
{
    switch (status) {
    case 200: return "OK";
    case 400: return "Bad Request";
    case 413: return "Payload Too Large";
    case 431: return "Request Header Fields Too Large";
    case 501: return "Not Implemented";
    default: return "Error";
    }
}

// Whole hexadecimal digits, at most 15 of them.
bool ParseHex(std::string_view s, size_t& value)
{
    s = s.substr(0, s.find(';'));
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t'))
        s.remove_suffix(1);
    if (s.empty() || s.size() > 15)
        return false;
    value = 0;
    for (const char c : s) {
        const int digit = std::isdigit(static_cast<unsigned char>(c)) ? c - '0'
                          : (c >= 'a' && c <= 'f')                    ? c - 'a' + 10
                          : (c >= 'A' && c <= 'F')                    ? c - 'A' + 10
                                                                      : -1;
        if (digit < 0)
            return false;
        value = value * 16 + static_cast<size_t>(digit);
    }
    return true;
}
}  // namespace

std::string Router::Answer(const std::string& head, const std::string& body, const std::string& ip, int port,
                           bool& close)
{
    std::string reply;
    MemoryStream stream(head, body, reply, ip, port);
    bool closed = false;
    if (!process_request(stream, false, closed, nullptr))
        closed = true;
    close = closed;
    return reply;
}

struct Listener::Connection {
    enum class State { Handshake, Head, Body, Working, Writing, Draining };
    uint64_t id = 0;
    int fd = -1;
    SSL* ssl = nullptr;
    std::string ip;
    int port = 0;
    State state = State::Handshake;
    short want = POLLIN;
    short watched = 0;  // what epoll reports for it
    Clock::time_point deadline;
    bool closeAfter = false;
    bool refused = false;  // answered before its request was read to the end

    std::string in;  // read, not yet part of a request
    size_t linesSeen = 0;
    // The request being read.
    std::string head;  // as the router gets it, without its length
    std::string body;
    const PageLimit* page = nullptr;
    size_t maxBody = 0;
    size_t bodyLength = 0;
    bool chunked = false;
    size_t chunkLeft = 0;
    bool chunkEnd = false;  // the CRLF after a chunk's data is due
    bool lastChunk = false;
    size_t trailerLines = 0;

    // The memory its body may take, set aside while it is read and served.
    size_t reserved = 0;
    bool admitted = false;

    std::string out;
    size_t outAt = 0;
    size_t drainLeft = 0;

    ~Connection()
    {
        if (ssl)
            SSL_free(ssl);
        if (fd >= 0)
            ::close(fd);
    }
};

// The workers and what passes between them and the listener's thread.
struct Listener::Shared {
    struct Job {
        uint64_t id;
        std::string head;
        std::string body;
        std::string ip;
        int port;
    };
    struct Done {
        uint64_t id;
        std::string reply;
        bool close;
    };
    std::mutex mutex;
    std::condition_variable ready;
    std::deque<Job> jobs;
    std::vector<Done> done;
    bool stopping = false;
    std::vector<std::thread> workers;
};

Listener::Listener(Router& router, const ListenerLimits& limits)
    : mRouter(router), mLimits(limits), mShared(std::make_unique<Shared>())
{
    mWakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (mWakeFd < 0)
        throw std::runtime_error("cannot make an event descriptor");
    for (int i = 0; i < mLimits.workers; ++i) {
        mShared->workers.emplace_back([this] {
            for (;;) {
                Shared::Job job;
                {
                    std::unique_lock lock(mShared->mutex);
                    mShared->ready.wait(lock, [this] { return mShared->stopping || !mShared->jobs.empty(); });
                    if (mShared->stopping)
                        return;
                    job = std::move(mShared->jobs.front());
                    mShared->jobs.pop_front();
                }
                bool close = false;
                std::string reply = mRouter.Answer(job.head, job.body, job.ip, job.port, close);
                const uint64_t id = job.id;
                job = Shared::Job();  // the body goes before the next request comes
                {
                    std::lock_guard lock(mShared->mutex);
                    mShared->done.push_back({id, std::move(reply), close});
                }
                const uint64_t one = 1;
                [[maybe_unused]] auto n = ::write(mWakeFd, &one, sizeof one);
            }
        });
    }
}

Listener::~Listener()
{
    {
        std::lock_guard lock(mShared->mutex);
        mShared->stopping = true;
    }
    mShared->ready.notify_all();
    for (auto& worker : mShared->workers)
        worker.join();
    mConnections.clear();
    if (mListenFd >= 0)
        ::close(mListenFd);
    if (mEpoll >= 0)
        ::close(mEpoll);
    ::close(mWakeFd);
}

void Listener::LimitPage(const std::string& path, size_t maxBody, RefusalHook hook)
{
    mPages[path] = PageLimit{maxBody, std::move(hook)};
}

int Listener::Bind(const std::string& host, int port)
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICHOST;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0 || !found)
        throw std::runtime_error("cannot listen on " + host + ":" + std::to_string(port));
    const int fd = ::socket(found->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int yes = 1;
    const bool ok = fd >= 0 && setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) == 0 &&
                    ::bind(fd, found->ai_addr, found->ai_addrlen) == 0 && ::listen(fd, SOMAXCONN) == 0;
    freeaddrinfo(found);
    if (!ok) {
        if (fd >= 0)
            ::close(fd);
        throw std::runtime_error("cannot listen on " + host + ":" + std::to_string(port));
    }
    mListenFd = fd;
    sockaddr_storage bound{};
    socklen_t length = sizeof bound;
    getsockname(fd, reinterpret_cast<sockaddr*>(&bound), &length);
    return ntohs(bound.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(&bound)->sin6_port
                                             : reinterpret_cast<sockaddr_in*>(&bound)->sin_port);
}

void Listener::Stop()
{
    {
        std::lock_guard lock(mShared->mutex);
        mShared->stopping = true;
    }
    mShared->ready.notify_all();
    const uint64_t one = 1;
    [[maybe_unused]] auto n = ::write(mWakeFd, &one, sizeof one);
}

void Listener::Run(const std::function<SSL_CTX*()>& tls)
{
    mEpoll = epoll_create1(EPOLL_CLOEXEC);
    epoll_event listen{EPOLLIN, {.u64 = kListenId}};
    epoll_event wake{EPOLLIN, {.u64 = kWakeId}};
    if (mEpoll < 0 || epoll_ctl(mEpoll, EPOLL_CTL_ADD, mListenFd, &listen) != 0 ||
        epoll_ctl(mEpoll, EPOLL_CTL_ADD, mWakeFd, &wake) != 0)
        throw std::runtime_error("cannot wait for connections");
    std::vector<epoll_event> events(256);
    auto nextSweep = Clock::now();
    for (;;) {
        // Deadlines, and bodies paused for memory, are looked at ten times a second.
        if (Clock::now() >= nextSweep) {
            const auto now = Clock::now();
            std::vector<uint64_t> late;
            for (auto& [id, c] : mConnections) {
                if (c->state != Connection::State::Working && c->deadline <= now)
                    late.push_back(id);
                else
                    Watch(*c);
            }
            for (const uint64_t id : late)
                Close(id);
            nextSweep = now + std::chrono::milliseconds(100);
        }
        const int n = epoll_wait(mEpoll, events.data(), static_cast<int>(events.size()), 100);
        if (n < 0 && errno != EINTR)
            throw std::runtime_error("cannot wait for connections");
        for (int i = 0; i < n; ++i) {
            const uint64_t id = events[static_cast<size_t>(i)].data.u64;
            if (id == kListenId) {
                Accept(tls());
            } else if (id == kWakeId) {
                uint64_t count = 0;
                [[maybe_unused]] auto r = ::read(mWakeFd, &count, sizeof count);
                std::vector<Shared::Done> done;
                {
                    std::lock_guard lock(mShared->mutex);
                    if (mShared->stopping)
                        return;
                    done.swap(mShared->done);
                }
                for (auto& d : done) {
                    const auto it = mConnections.find(d.id);
                    if (it == mConnections.end())
                        continue;
                    Connection& c = *it->second;
                    Release(c);
                    c.out = std::move(d.reply);
                    c.outAt = 0;
                    c.closeAfter = c.closeAfter || d.close;
                    c.state = Connection::State::Writing;
                    c.deadline = Clock::now() + std::chrono::seconds(mLimits.clientSeconds);
                    Write(c);
                    Watch(d.id);
                }
            } else if (const auto it = mConnections.find(id); it != mConnections.end()) {
                Connection& c = *it->second;
                if (c.state == Connection::State::Writing)
                    Write(c);
                else if (c.state == Connection::State::Draining)
                    Drain(c);
                else
                    Pump(c);
                Watch(id);
            }
        }
    }
}

void Listener::Watch(uint64_t id)
{
    if (const auto it = mConnections.find(id); it != mConnections.end())
        Watch(*it->second);
}

// Asks epoll for what the connection waits on: nothing while a worker has its
// request, or while its body waits for memory.
void Listener::Watch(Connection& c)
{
    const short wanted = c.state == Connection::State::Working || Paused(c) ? 0 : c.want;
    if (wanted == c.watched)
        return;
    epoll_event e{static_cast<uint32_t>(wanted), {.u64 = c.id}};
    epoll_ctl(mEpoll, wanted == 0 ? EPOLL_CTL_DEL : c.watched == 0 ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, c.fd, &e);
    c.watched = wanted;
}

void Listener::Accept(SSL_CTX* tls)
{
    for (;;) {
        sockaddr_storage from{};
        socklen_t length = sizeof from;
        const int fd = accept4(mListenFd, reinterpret_cast<sockaddr*>(&from), &length, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd < 0)
            return;
        char text[INET6_ADDRSTRLEN] = "";
        int port = 0;
        if (from.ss_family == AF_INET6) {
            const auto* a = reinterpret_cast<sockaddr_in6*>(&from);
            inet_ntop(AF_INET6, &a->sin6_addr, text, sizeof text);
            port = ntohs(a->sin6_port);
        } else {
            const auto* a = reinterpret_cast<sockaddr_in*>(&from);
            inet_ntop(AF_INET, &a->sin_addr, text, sizeof text);
            port = ntohs(a->sin_port);
        }
        size_t& fromThere = mPerAddress[text];
        if (fromThere >= mLimits.perAddress || mConnections.size() >= mLimits.connections) {
            if (fromThere == 0)
                mPerAddress.erase(text);
            ::close(fd);
            continue;
        }
        ++fromThere;
        const int yes = 1;
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        auto c = std::make_unique<Connection>();
        c->id = mNextId++;
        c->fd = fd;
        c->ip = text;
        c->port = port;
        c->ssl = SSL_new(tls);
        c->deadline = Clock::now() + std::chrono::seconds(mLimits.clientSeconds);
        const uint64_t id = c->id;
        Connection& ref = *c;
        mConnections.emplace(id, std::move(c));
        if (!ref.ssl || SSL_set_fd(ref.ssl, fd) != 1) {
            Close(id);
            continue;
        }
        SSL_set_accept_state(ref.ssl);
        Pump(ref);
        Watch(id);
    }
}

// Reads and frames requests until one is complete, the socket has no more
// for now, or the connection ends.
void Listener::Pump(Connection& c)
{
    using State = Connection::State;
    if (c.state == State::Handshake) {
        ERR_clear_error();
        const int r = SSL_do_handshake(c.ssl);
        if (r != 1) {
            Stalled(c, r);
            return;
        }
        c.state = State::Head;
    }
    char buffer[16384];
    for (;;) {
        if (c.state == State::Head) {
            if (ReadHead(c))
                continue;  // on to the body, perhaps an empty one
        } else if (Paused(c)) {
            return;  // resumed once memory frees
        } else if (ReadBody(c)) {
            Dispatch(c);
            return;
        }
        if (c.state == State::Writing) {
            Write(c);  // a refusal
            return;
        }
        ERR_clear_error();
        const int n = SSL_read(c.ssl, buffer, sizeof buffer);
        if (n <= 0) {
            Stalled(c, n);
            return;
        }
        c.in.append(buffer, static_cast<size_t>(n));
    }
}

// True once the head is read and parsed: the state is then Body (perhaps with
// nothing to read), or a refusal is on its way.
bool Listener::ReadHead(Connection& c)
{
    // Blank lines between requests are allowed.
    const size_t skip = c.in.find_first_not_of("\r\n");
    c.in.erase(0, skip == std::string::npos ? c.in.size() : skip);
    const size_t end = c.in.find("\r\n\r\n");
    const size_t lines = std::count(c.in.begin(), c.in.begin() + std::min(c.in.size(), end), '\n');
    if (lines > mLimits.headerLines ||
        (c.in.size() > mLimits.headBytes + 4 && (end == std::string::npos || end > mLimits.headBytes))) {
        Refuse(c, {431, "The request has too many or too long header lines"});
        return false;
    }
    if (end == std::string::npos)
        return false;

    std::string_view head(c.in.data(), end + 2);
    const size_t lineEnd = head.find("\r\n");
    const std::string_view requestLine = head.substr(0, lineEnd);
    const size_t sp1 = requestLine.find(' ');
    const size_t sp2 = requestLine.rfind(' ');
    std::string_view target = sp1 < sp2 ? requestLine.substr(sp1 + 1, sp2 - sp1 - 1) : std::string_view();
    c.head = std::string(requestLine) + "\r\n";
    c.page = nullptr;
    if (const auto page = mPages.find(std::string(target.substr(0, target.find('?')))); page != mPages.end())
        c.page = &page->second;
    c.maxBody = c.page ? c.page->maxBody : mLimits.body;

    std::string length, transfer;
    bool badHeader = target.empty();
    for (size_t at = lineEnd + 2; at < head.size();) {
        const size_t next = head.find("\r\n", at);
        const std::string_view line = head.substr(at, next - at);
        at = next + 2;
        const size_t colon = line.find(':');
        if (colon == std::string_view::npos || colon == 0) {
            badHeader = true;
            continue;
        }
        const std::string name = Lower(std::string(line.substr(0, colon)));
        const std::string value = Trim(line.substr(colon + 1));
        // The listener frames the body itself; replies are never compressed,
        // since many carry passwords, codes or links.
        if (name == "content-length") {
            badHeader = badHeader || (!length.empty() && length != value);
            length = value;
        } else if (name == "transfer-encoding") {
            transfer = Lower(value);
        } else if (name != "expect" && name != "accept-encoding") {
            c.head.append(line).append("\r\n");
        }
    }
    c.in.erase(0, end + 4);
    c.body.clear();
    c.chunked = !transfer.empty();
    c.bodyLength = 0;
    c.chunkLeft = 0;
    c.chunkEnd = c.lastChunk = false;
    c.trailerLines = 0;
    if (badHeader || (c.chunked && (transfer != "chunked" || !length.empty())) ||
        (!length.empty() && (length.size() > 15 || length.find_first_not_of("0123456789") != std::string::npos))) {
        Refuse(c, {400, "The request is malformed"});
        return false;
    }
    if (!length.empty())
        c.bodyLength = std::stoull(length);
    if (c.bodyLength > c.maxBody) {
        Refuse(c, {413, "The request is too large"});
        return false;
    }
    c.reserved = c.chunked ? c.maxBody : c.bodyLength;
    c.admitted = false;
    c.state = Connection::State::Body;
    // The whole request, body included, has its deadline.
    const size_t allowance = c.chunked ? c.maxBody : c.bodyLength;
    c.deadline = std::max(c.deadline, Clock::now() + std::chrono::seconds(mLimits.clientSeconds)) +
                 std::chrono::seconds(allowance / mLimits.bodyBytesPerSecond);
    return true;
}

// True once the body is whole.
bool Listener::ReadBody(Connection& c)
{
    if (c.chunked)
        return Dechunk(c);
    // Moved out as it comes, into a buffer of the announced size.
    const size_t take = std::min(c.bodyLength - c.body.size(), c.in.size());
    c.body.append(c.in, 0, take);
    c.in.erase(0, take);
    return c.body.size() == c.bodyLength;
}

bool Listener::Dechunk(Connection& c)
{
    for (;;) {
        if (c.chunkLeft > 0) {
            const size_t take = std::min(c.chunkLeft, c.in.size());
            c.body.append(c.in, 0, take);
            c.in.erase(0, take);
            c.chunkLeft -= take;
            if (c.chunkLeft > 0)
                return false;
            c.chunkEnd = true;
        }
        if (c.chunkEnd) {
            if (c.in.size() < 2)
                return false;
            if (c.in.compare(0, 2, "\r\n") != 0) {
                Refuse(c, {400, "The request is malformed"});
                return false;
            }
            c.in.erase(0, 2);
            c.chunkEnd = false;
        }
        const size_t eol = c.in.find("\r\n");
        if (eol == std::string::npos) {
            if (c.in.size() > 1024)
                Refuse(c, {400, "The request is malformed"});
            return false;
        }
        if (c.lastChunk) {
            c.in.erase(0, eol + 2);
            if (eol == 0)
                return true;
            if (++c.trailerLines > mLimits.headerLines) {
                Refuse(c, {431, "The request has too many or too long header lines"});
                return false;
            }
            continue;
        }
        size_t size = 0;
        if (!ParseHex(std::string_view(c.in).substr(0, eol), size)) {
            Refuse(c, {400, "The request is malformed"});
            return false;
        }
        c.in.erase(0, eol + 2);
        if (size > c.maxBody - c.body.size()) {
            Refuse(c, {413, "The request is too large"});
            return false;
        }
        c.chunkLeft = size;
        c.lastChunk = size == 0;
    }
}

void Listener::Dispatch(Connection& c)
{
    Shared::Job job{c.id, std::move(c.head), std::move(c.body), c.ip, c.port};
    job.head.append("Content-Length: ").append(std::to_string(job.body.size())).append("\r\n\r\n");
    c.body = std::string();
    c.head = std::string();
    if (c.in.capacity() > 64 * 1024)
        c.in.shrink_to_fit();
    c.state = Connection::State::Working;
    {
        std::lock_guard lock(mShared->mutex);
        mShared->jobs.push_back(std::move(job));
    }
    mShared->ready.notify_one();
}

// Answers at once, without reading what is refused, and ends the connection.
void Listener::Refuse(Connection& c, Refusal refusal)
{
    if (c.page && c.page->hook)
        refusal = c.page->hook(refusal);
    c.out = "HTTP/1.1 " + std::to_string(refusal.status) + " " + Reason(refusal.status) +
            "\r\nContent-Type: text/plain; charset=windows-1252\r\nContent-Length: " +
            std::to_string(refusal.text.size()) + "\r\nConnection: close\r\n\r\n" + refusal.text;
    c.outAt = 0;
    c.closeAfter = true;
    c.refused = true;
    Release(c);
    c.in = std::string();
    c.body = std::string();
    c.state = Connection::State::Writing;
    c.deadline = Clock::now() + std::chrono::seconds(mLimits.clientSeconds);
}

void Listener::Write(Connection& c)
{
    while (c.outAt < c.out.size()) {
        ERR_clear_error();
        const int n = SSL_write(c.ssl, c.out.data() + c.outAt,
                                static_cast<int>(std::min<size_t>(c.out.size() - c.outAt, 1 << 20)));
        if (n <= 0) {
            Stalled(c, n);
            return;
        }
        c.outAt += static_cast<size_t>(n);
        c.deadline = Clock::now() + std::chrono::seconds(mLimits.clientSeconds);
    }
    c.out = std::string();
    if (c.closeAfter) {
        // The client may still be sending: closing now would reset the
        // connection and lose the answer, so what it sends is read and dropped
        // for a moment first. A client still sending what was refused takes
        // an end of the connection for a failure, even with the answer in
        // hand: it is left open until the client has sent it (up to a little
        // more than the page takes, in the time such a body is given) and closes.
        c.state = Connection::State::Draining;
        c.want = POLLIN;
        c.drainLeft = c.refused ? c.maxBody + 8 * 1024 * 1024 : 8 * 1024 * 1024;
        c.deadline = Clock::now() + std::chrono::seconds(std::min(mLimits.clientSeconds, 2));
        if (c.refused) {
            c.deadline += std::chrono::seconds(c.drainLeft / mLimits.bodyBytesPerSecond);
        } else {
            ERR_clear_error();
            SSL_shutdown(c.ssl);
            ::shutdown(c.fd, SHUT_WR);
        }
        Drain(c);
        return;
    }
    c.state = Connection::State::Head;
    c.want = POLLIN;
    c.deadline = Clock::now() + std::chrono::seconds(mLimits.clientSeconds);
    Pump(c);  // requests sent ahead are already waiting
}

void Listener::Drain(Connection& c)
{
    char buffer[16384];
    for (;;) {
        const ssize_t n = ::recv(c.fd, buffer, sizeof buffer, 0);
        if (n > 0 && static_cast<size_t>(n) < c.drainLeft) {
            c.drainLeft -= static_cast<size_t>(n);
            continue;
        }
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        Close(c.id);
        return;
    }
}

void Listener::Close(uint64_t id)
{
    const auto it = mConnections.find(id);
    if (it == mConnections.end())
        return;
    Release(*it->second);
    const auto address = mPerAddress.find(it->second->ip);
    if (address != mPerAddress.end() && --address->second == 0)
        mPerAddress.erase(address);
    mConnections.erase(it);
}

// After a TLS call that did not finish: waits for what it wants, or ends the connection.
void Listener::Stalled(Connection& c, int result)
{
    const int e = SSL_get_error(c.ssl, result);
    if (e == SSL_ERROR_WANT_READ || e == SSL_ERROR_WANT_WRITE)
        c.want = e == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT;
    else
        Close(c.id);
}

// A body is read once the memory it may take is set aside, so that every body
// being read can be read to its end; small ones always are.
bool Listener::Paused(Connection& c)
{
    if (c.state != Connection::State::Body || c.admitted)
        return false;
    if (c.reserved > mLimits.body && mReserved + c.reserved > mLimits.bufferedBodies)
        return true;
    c.admitted = true;
    mReserved += c.reserved;
    c.body.reserve(c.reserved);
    return false;
}

void Listener::Release(Connection& c)
{
    if (c.admitted)
        mReserved -= c.reserved;
    c.admitted = false;
    c.reserved = 0;
}
