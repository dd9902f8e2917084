// quillotone-service [--listen ADDR:PORT] [--data DIR] [--demo-account NUMBER:PASSWORD]
//                    [--client-timeout SECONDS] [--operator-key-file FILE]
// The Quillotone web service over HTTPS. It prints one line,
// "Quillotone service listening on https://ADDR:PORT/", once it takes requests;
// PORT 0 picks a free port. The first line of the operator key file is the key
// of the all-numbers outbox view, which is off without one. SIGINT or SIGTERM stops it cleanly.
#include "Certificate.h"
#include "Pages.h"
#include "Store.h"

#include <QFile>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QStringList>
#include <httplib.h>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <malloc.h>
#include <pthread.h>
#include <thread>

namespace {
struct Options {
    std::string host = "127.0.0.1";
    int port = 8443;
    std::string data;
    std::string demoMobile, demoPassword;
    int clientTimeout = 5;
    std::string operatorKey;
};

[[noreturn]] void Usage(const char* problem)
{
    std::fprintf(stderr,
                 "quillotone-service: %s\n"
                 "usage: quillotone-service [--listen ADDR:PORT] [--data DIR] [--demo-account NUMBER:PASSWORD]"
                 " [--client-timeout SECONDS] [--operator-key-file FILE]\n",
                 problem);
    std::exit(2);
}

Options ReadOptions(const QStringList& args)
{
    Options o;
    o.data = (QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
              QStringLiteral("/quillotone-service"))
                 .toStdString();
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QString& name = args[i];
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
        } else if (name == QLatin1String("--data")) {
            o.data = value.toStdString();
        } else if (name == QLatin1String("--demo-account")) {
            const qsizetype colon = value.indexOf(QLatin1Char(':'));
            if (colon < 1 || colon + 1 >= value.size())
                Usage("--demo-account wants NUMBER:PASSWORD");
            o.demoMobile = value.left(colon).toStdString();
            o.demoPassword = value.mid(colon + 1).toStdString();
        } else if (name == QLatin1String("--client-timeout")) {
            bool ok = false;
            o.clientTimeout = value.toInt(&ok);
            if (!ok || o.clientTimeout < 1)
                Usage("--client-timeout wants whole seconds");
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

    try {
        std::filesystem::create_directories(options.data);
        const CertificateFiles tls = EnsureCertificate(options.data);
        Store store(options.data + "/service.db");
        Pages pages(store, options.data);
        if (!options.demoMobile.empty())
            pages.EnsureDemoAccount(options.demoMobile, options.demoPassword);

        httplib::SSLServer server(tls.certificate.c_str(), tls.key.c_str());
        if (!server.is_valid())
            throw std::runtime_error("the TLS certificate in " + options.data + " cannot be used");
        pages.SetOperatorKey(options.operatorKey);
        pages.Register(server);
        server.new_task_queue = [] { return new httplib::ThreadPool(32); };
        server.set_read_timeout(options.clientTimeout);
        server.set_write_timeout(options.clientTimeout);
        server.set_keep_alive_timeout(options.clientTimeout);
        server.set_keep_alive_max_count(10000);
        server.set_tcp_nodelay(true);

        int port = options.port;
        if (port == 0)
            port = server.bind_to_any_port(options.host);
        else if (!server.bind_to_port(options.host, port))
            port = -1;
        if (port <= 0)
            throw std::runtime_error("cannot listen on " + options.host + ":" + std::to_string(options.port));
        const bool v6 = options.host.find(':') != std::string::npos;
        const std::string base =
            "https://" + (v6 ? "[" + options.host + "]" : options.host) + ":" + std::to_string(port) + "/";
        pages.SetPublicBase(base);

        std::thread stopper([&] {
            int signal = 0;
            sigwait(&stopSignals, &signal);
            server.stop();
        });
        std::printf("Quillotone service listening on %s\n", base.c_str());
        std::fflush(stdout);
        const bool clean = server.listen_after_bind();
        // Wake the stopper if the server ended on its own.
        if (stopper.joinable()) {
            pthread_kill(stopper.native_handle(), SIGTERM);
            stopper.join();
        }
        return clean ? 0 : 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "quillotone-service: %s\n", e.what());
        return 1;
    }
}
