#pragma once
// The service's front door. One thread accepts TLS connections and reads each
// request whole, under size limits and deadlines, with epoll; complete requests
// go to a few workers that run the pages. A slow or hostile client costs a
// socket and a bounded buffer, never a thread.
#include <httplib.h>
#include <openssl/ssl.h>
#include <functional>
#include <map>
#include <memory>
#include <string>

// What the listener answers to a request it will not read in full.
struct Refusal {
    int status = 0;
    std::string text;
};
// A page's own wording of a refusal; it is given the listener's.
using RefusalHook = std::function<Refusal(const Refusal&)>;

struct ListenerLimits {
    int clientSeconds = 5;                   // handshake and request head, idle keep-alive, a stalled reply
    size_t bodyBytesPerSecond = 16 * 1024;   // a body earns this much time on top of clientSeconds
    size_t perAddress = 64;                  // connections from one address
    size_t connections = 4000;               // connections in all
    size_t headBytes = 32 * 1024;            // request line and header lines
    size_t headerLines = 100;
    size_t body = 64 * 1024;                 // for every page without a limit of its own
    size_t bufferedBodies = 64 * 1024 * 1024;  // bodies being read or served, all together (set aside
                                               // as announced, or the page's limit for chunked ones)
    int workers = 8;
};

// The pages' router: an httplib server that is fed whole requests from memory.
class Router : public httplib::Server {
public:
    // Answers one complete request (head with its blank line, and body); close
    // is set when the connection ends after it.
    std::string Answer(const std::string& head, const std::string& body, const std::string& ip, int port,
                       bool& close);
};

class Listener {
public:
    Listener(Router& router, const ListenerLimits& limits);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // A page's body limit, and how it words a refusal (a page the program
    // reads may need its own fields rather than an HTTP error).
    void LimitPage(const std::string& path, size_t maxBody, RefusalHook hook = {});

    // Returns the port; throws when it cannot listen.
    int Bind(const std::string& host, int port);
    // Serves until Stop. tls gives the context for each new connection, so a
    // renewed certificate takes effect without a restart.
    void Run(const std::function<SSL_CTX*()>& tls);
    // From any thread.
    void Stop();

private:
    struct Connection;
    struct Shared;
    struct PageLimit {
        size_t maxBody;
        RefusalHook hook;
    };

    void Accept(SSL_CTX* tls);
    void Watch(uint64_t id);
    void Watch(Connection& c);
    void Pump(Connection& c);
    bool ReadHead(Connection& c);
    bool ReadBody(Connection& c);
    bool Dechunk(Connection& c);
    void Dispatch(Connection& c);
    void Refuse(Connection& c, Refusal refusal);
    void Write(Connection& c);
    void Drain(Connection& c);
    void Close(uint64_t id);
    void Stalled(Connection& c, int result);
    bool Paused(Connection& c);
    void Release(Connection& c);

    Router& mRouter;
    ListenerLimits mLimits;
    std::map<std::string, PageLimit> mPages;
    int mListenFd = -1;
    int mWakeFd = -1;
    int mEpoll = -1;
    uint64_t mNextId = 2;  // 0 and 1 stand for the listening socket and the wake-up
    std::map<uint64_t, std::unique_ptr<Connection>> mConnections;
    std::map<std::string, size_t> mPerAddress;
    size_t mReserved = 0;  // bodies being read or served
    std::unique_ptr<Shared> mShared;
};
