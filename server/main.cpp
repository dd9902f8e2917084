// quillotone-service: the Quillotone web service over HTTPS (--help lists the
// options). It prints one line, "Quillotone service listening on
// https://ADDR:PORT/", once it takes requests; PORT 0 picks a free port.
// SIGINT or SIGTERM stops it cleanly.
#include "Certificate.h"
#include "DataFolder.h"
#include "Listener.h"
#include "PageKit.h"
#include "Pages.h"
#include "Store.h"
#include "wire/Pages.h"

#include <QFile>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QStringList>
#include <csignal>
#include <cstdio>
#include <malloc.h>
#include <pthread.h>
#include <sys/resource.h>
#include <thread>

namespace {
struct Options {
    std::string host = "127.0.0.1";
    int port = 8443;
    std::string data;
    std::string demoMobile, demoPassword;
    int clientTimeout = 5;
    int perAddress = 64;
    std::string operatorKey;
    std::string store;      // empty: sqlite: in the data folder
    std::string publicUrl;  // empty: where it listens
};

const char* const kUsage =
    "usage: quillotone-service [OPTION VALUE]...\n"
    "The Quillotone web service over HTTPS.\n"
    "  --listen ADDR:PORT            where to take requests (127.0.0.1:8443; port 0 picks a free one)\n"
    "  --data DIR                    database, tones, key and certificate\n"
    "                                (~/.local/share/quillotone-service)\n"
    "  --demo-account NUMBER:PASSWORD  makes or resets an active account to try the program with\n"
    "  --client-timeout SECONDS      time a client has for its handshake and each request's head,\n"
    "                                idle time between requests, and time a reply may stall (5)\n"
    "  --per-address N               connections one address may hold at once (64)\n"
    "  --operator-key-file FILE      its first line (12 characters or more) is the key of the\n"
    "                                operator's view of every number's messages, off without one\n"
    "  --store URL                   where accounts, messages and tones are kept: sqlite:PATH\n"
    "                                (sqlite:DIR/service.db of --data) or postgresql://USER@HOST/DB,\n"
    "                                which any number of service processes may share\n"
    "  --public-url URL              the https address people reach it at, ending in \"/\", when that\n"
    "                                is not where it listens (behind a load balancer); tone links\n"
    "                                and invitations point there\n"
    "  --help                        prints this and stops\n";

[[noreturn]] void Usage(const char* problem)
{
    std::fprintf(stderr, "quillotone-service: %s\n%s", problem, kUsage);
    std::exit(2);
}

int WholeNumber(const QString& value, const char* problem)
{
    bool ok = false;
    const int n = value.toInt(&ok);
    if (!ok || n < 1)
        Usage(problem);
    return n;
}

Options ReadOptions(const QStringList& args)
{
    Options o;
    o.data = (QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
              QStringLiteral("/quillotone-service"))
                 .toStdString();
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QString& name = args[i];
        if (name == QLatin1String("--help")) {
            std::fputs(kUsage, stdout);
            std::exit(0);
        }
        if (i + 1 >= args.size())
            Usage("an option lacks its value");
        const QString value = args[++i];
        if (name == QLatin1String("--listen")) {
            const qsizetype colon = value.lastIndexOf(QLatin1Char(':'));
            bool ok = false;
            o.port = value.mid(colon + 1).toInt(&ok);
            if (colon < 1 || !ok || o.port < 0 || o.port > 65535)
                Usage("--listen wants ADDR:PORT");
            o.host = value.left(colon).remove(QLatin1Char('[')).remove(QLatin1Char(']')).toStdString();
        } else if (name == QLatin1String("--store")) {
            o.store = value.toStdString();
        } else if (name == QLatin1String("--public-url")) {
            o.publicUrl = value.toStdString();
            if (!value.startsWith(QLatin1String("https://")) || !value.endsWith(QLatin1Char('/')))
                Usage("--public-url wants https://HOST[:PORT]/");
        } else if (name == QLatin1String("--data")) {
            o.data = value.toStdString();
        } else if (name == QLatin1String("--demo-account")) {
            const qsizetype colon = value.indexOf(QLatin1Char(':'));
            if (colon < 1 || colon + 1 >= value.size())
                Usage("--demo-account wants NUMBER:PASSWORD");
            o.demoMobile = value.left(colon).toStdString();
            o.demoPassword = value.mid(colon + 1).toStdString();
        } else if (name == QLatin1String("--client-timeout")) {
            o.clientTimeout = WholeNumber(value, "--client-timeout wants whole seconds");
        } else if (name == QLatin1String("--per-address")) {
            o.perAddress = WholeNumber(value, "--per-address wants a whole number");
        } else if (name == QLatin1String("--operator-key-file")) {
            QFile file(value);
            if (!file.open(QIODevice::ReadOnly))
                Usage("--operator-key-file cannot be read");
            o.operatorKey = QString::fromUtf8(file.readLine()).trimmed().toStdString();
            if (o.operatorKey.size() < 12)
                Usage("the operator key wants at least 12 characters");
        } else {
            Usage("unknown option");
        }
    }
    return o;
}
}  // namespace

int main(int argc, char** argv)
{
    // Fonts for the code pictures, with no display needed.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    // Uploads come and go in buffers of a few hundred kilobytes: keep them in
    // the heap for reuse instead of mapping and unmapping each one.
    mallopt(M_MMAP_THRESHOLD, 8 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 64 * 1024 * 1024);
    const Options options = ReadOptions(QGuiApplication::arguments());

    // Signals go to one waiting thread, which stops the server.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    // Room for thousands of connections.
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0) {
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
    }

    try {
        MakeDataFolderPrivate(options.data);
        TlsIdentity tls(options.data);
        Store store(options.store.empty() ? "sqlite:" + options.data + "/service.db" : options.store);
        // Tones in files belong to this process alone; a shared store keeps them itself.
        if (!store.KeepsToneBytes())
            TidyTones(options.data + "/tones", store);
        Pages pages(store, options.data);
        if (!options.demoMobile.empty())
            pages.EnsureDemoAccount(options.demoMobile, options.demoPassword);
        pages.SetOperatorKey(options.operatorKey);

        Router router;
        pages.Register(router);
        // What the replies' Keep-Alive header tells clients.
        router.set_keep_alive_timeout(options.clientTimeout);
        router.set_keep_alive_max_count(100000);
        ListenerLimits limits;
        limits.clientSeconds = options.clientTimeout;
        limits.perAddress = static_cast<size_t>(options.perAddress);
        limits.connections = std::min<size_t>(limits.connections, files.rlim_cur > 100 ? files.rlim_cur - 64 : 32);
        Listener listener(router, limits);
        // The program reads an upload's refusal from its fields; anything
        // shorter it would count as delivered.
        listener.LimitPage(page::Route(wire::kToneUpload), ToneTransfer::kMaxBody, [](const Refusal& refusal) {
            return Refusal{200, ToneTransfer::RefusalReply(refusal.status == 413 ? 5 : 4, refusal.text)};
        });
        const int port = listener.Bind(options.host, options.port);
        const bool v6 = options.host.find(':') != std::string::npos;
        const std::string base =
            "https://" + (v6 ? "[" + options.host + "]" : options.host) + ":" + std::to_string(port) + "/";
        pages.SetPublicBase(options.publicUrl.empty() ? base : options.publicUrl);

        std::thread stopper([&] {
            int signal = 0;
            sigwait(&stopSignals, &signal);
            listener.Stop();
        });
        std::printf("Quillotone service listening on %s\n", base.c_str());
        std::fflush(stdout);
        int status = 0;
        try {
            listener.Run([&] { return tls.Context(); });
        } catch (const std::exception& e) {
            std::fprintf(stderr, "quillotone-service: %s\n", e.what());
            status = 1;
        }
        // Wake the stopper if the listener ended on its own.
        pthread_kill(stopper.native_handle(), SIGTERM);
        stopper.join();
        return status;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "quillotone-service: %s\n", e.what());
        return 1;
    }
}
