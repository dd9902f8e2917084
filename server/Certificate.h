#pragma once
// The service's own TLS identity: an EC P-256 key and a self-signed
// certificate for localhost, 127.0.0.1 and ::1, made on first start and kept
// in the data folder. The program trusts exactly this certificate.
#include <string>

struct CertificateFiles {
    std::string certificate;  // "service.crt", PEM
    std::string key;          // "service.key", PEM, readable by the owner only
};

// Makes both files in folder unless both exist; throws on failure.
CertificateFiles EnsureCertificate(const std::string& folder);
