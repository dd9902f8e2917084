#include "Certificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <sys/stat.h>

namespace {
constexpr long kValidDays = 365;
constexpr long kRenewDays = 30;

template <class T, void (*Free)(T*)>
using Owned = std::unique_ptr<T, decltype([](T* p) { Free(p); })>;

void CloseFile(FILE* f)
{
    std::fclose(f);
}

void Check(bool ok, const char* what)
{
    if (!ok)
        throw std::runtime_error(std::string("certificate: ") + what);
}

void AddExtension(X509* cert, int nid, const char* value)
{
    X509V3_CTX ctx;
    X509V3_set_ctx_nodb(&ctx);
    X509V3_set_ctx(&ctx, cert, cert, nullptr, nullptr, 0);
    Owned<X509_EXTENSION, X509_EXTENSION_free> ext(X509V3_EXT_conf_nid(nullptr, &ctx, nid, value));
    Check(ext && X509_add_ext(cert, ext.get(), -1) == 1, "extension");
}

void WritePem(const std::string& path, mode_t mode, const std::function<int(FILE*)>& write)
{
    const std::string partial = path + ".part";
    FILE* f = std::fopen(partial.c_str(), "wb");
    Check(f != nullptr, "cannot write the data folder");
    ::chmod(partial.c_str(), mode);
    const bool ok = write(f) == 1;
    Check(std::fclose(f) == 0 && ok, "write");
    std::filesystem::rename(partial, path);
}

// A key and a certificate that belong together, with more than the renewal
// margin left.
bool StillGood(const CertificateFiles& files)
{
    Owned<FILE, CloseFile> certFile(std::fopen(files.certificate.c_str(), "rb"));
    Owned<FILE, CloseFile> keyFile(std::fopen(files.key.c_str(), "rb"));
    if (!certFile || !keyFile)
        return false;
    Owned<X509, X509_free> cert(PEM_read_X509(certFile.get(), nullptr, nullptr, nullptr));
    Owned<EVP_PKEY, EVP_PKEY_free> key(PEM_read_PrivateKey(keyFile.get(), nullptr, nullptr, nullptr));
    if (!cert || !key || X509_check_private_key(cert.get(), key.get()) != 1)
        return false;
    std::time_t margin = std::time(nullptr) + kRenewDays * 24L * 3600;
    return X509_cmp_time(X509_get0_notAfter(cert.get()), &margin) > 0;
}
}  // namespace

CertificateFiles EnsureCertificate(const std::string& folder, bool* renewed)
{
    const CertificateFiles files{folder + "/service.crt", folder + "/service.key"};
    if (renewed)
        *renewed = false;
    if (StillGood(files))
        return files;
    if (renewed)
        *renewed = true;

    Owned<EVP_PKEY, EVP_PKEY_free> key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"));
    Check(key != nullptr, "key");
    Owned<X509, X509_free> cert(X509_new());
    Check(cert != nullptr, "new");
    X509_set_version(cert.get(), 2);
    unsigned char serial[16];
    Check(RAND_bytes(serial, sizeof serial) == 1, "serial");
    serial[0] &= 0x7F;
    Owned<BIGNUM, BN_free> bn(BN_bin2bn(serial, sizeof serial, nullptr));
    Check(bn && BN_to_ASN1_INTEGER(bn.get(), X509_get_serialNumber(cert.get())), "serial");
    X509_gmtime_adj(X509_getm_notBefore(cert.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(cert.get()), kValidDays * 24L * 3600);
    X509_NAME* name = X509_get_subject_name(cert.get());
    X509_NAME_add_entry_by_txt(name, "O", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("Quillotone"), -1, -1, 0);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"), -1, -1, 0);
    X509_set_issuer_name(cert.get(), name);
    X509_set_pubkey(cert.get(), key.get());
    AddExtension(cert.get(), NID_basic_constraints, "critical,CA:FALSE");
    AddExtension(cert.get(), NID_key_usage, "critical,digitalSignature");
    AddExtension(cert.get(), NID_ext_key_usage, "serverAuth");
    AddExtension(cert.get(), NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1");
    AddExtension(cert.get(), NID_subject_key_identifier, "hash");
    Check(X509_sign(cert.get(), key.get(), EVP_sha256()) > 0, "sign");

    std::filesystem::create_directories(folder);
    WritePem(files.key, 0600, [&](FILE* f) {
        return PEM_write_PrivateKey(f, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
    WritePem(files.certificate, 0644, [&](FILE* f) { return PEM_write_X509(f, cert.get()); });
    return files;
}

TlsIdentity::TlsIdentity(std::string folder) : mFolder(std::move(folder))
{
    Context();
    Check(mContext != nullptr, "the TLS certificate cannot be used");
}

TlsIdentity::~TlsIdentity()
{
    SSL_CTX_free(mContext);
}

SSL_CTX* TlsIdentity::Context()
{
    const std::time_t now = std::time(nullptr);
    if (mContext && now < mNextCheck)
        return mContext;
    mNextCheck = now + 3600;
    bool renewed = false;
    CertificateFiles files;
    try {
        files = EnsureCertificate(mFolder, &renewed);
    } catch (const std::exception&) {
        return mContext;  // the old certificate serves until the folder takes a new one
    }
    if (mContext && !renewed)
        return mContext;
    SSL_CTX* context = SSL_CTX_new(TLS_server_method());
    // Forward-secret AEAD suites only, in the service's order; TLS 1.3 keeps its own AEAD suites.
    const bool ok = context && SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) == 1 &&
                    SSL_CTX_set_cipher_list(context, "ECDHE-ECDSA-AES128-GCM-SHA256:ECDHE-ECDSA-AES256-GCM-SHA384:"
                                                     "ECDHE-ECDSA-CHACHA20-POLY1305") == 1 &&
                    SSL_CTX_use_certificate_chain_file(context, files.certificate.c_str()) == 1 &&
                    SSL_CTX_use_PrivateKey_file(context, files.key.c_str(), SSL_FILETYPE_PEM) == 1 &&
                    SSL_CTX_check_private_key(context) == 1;
    if (!ok) {
        SSL_CTX_free(context);
        return mContext;
    }
    SSL_CTX_set_options(context, SSL_OP_CIPHER_SERVER_PREFERENCE | SSL_OP_NO_COMPRESSION |
                                     SSL_OP_NO_RENEGOTIATION);
    // No resumption tickets: the program's clients do not resume, and a ticket
    // arriving unasked looks like an early answer to a client still sending.
    SSL_CTX_set_num_tickets(context, 0);
    SSL_CTX_set_mode(context, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    // Connections made before keep the old one alive until they end.
    SSL_CTX_free(mContext);
    mContext = context;
    return mContext;
}
