#pragma once
// The service's own TLS identity: an EC P-256 key and a self-signed
// certificate for localhost, 127.0.0.1 and ::1, valid for a year, kept in the
// data folder. The program trusts exactly this certificate file, so a renewed
// certificate replaces it under the same name.
#include <openssl/ssl.h>
#include <ctime>
#include <string>

struct CertificateFiles {
    std::string certificate;  // "service.crt", PEM
    std::string key;          // "service.key", PEM, readable by the owner only
};

// Makes both files in folder unless they hold a matching key and certificate
// with more than a month left; throws on failure. Sets renewed when it made them.
CertificateFiles EnsureCertificate(const std::string& folder, bool* renewed = nullptr);

// The service's TLS: 1.2 with forward-secret AEAD suites in the service's
// order, or 1.3; no compression. Renews the certificate when it nears its end,
// checked at most hourly, and gives new connections the renewed one.
class TlsIdentity {
public:
    explicit TlsIdentity(std::string folder);
    ~TlsIdentity();
    TlsIdentity(const TlsIdentity&) = delete;
    TlsIdentity& operator=(const TlsIdentity&) = delete;

    // For a new connection; only ever called from one thread.
    SSL_CTX* Context();

private:
    std::string mFolder;
    SSL_CTX* mContext = nullptr;
    std::time_t mNextCheck = 0;
};
