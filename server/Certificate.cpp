#include "Certificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <sys/stat.h>

namespace {
template <class T, void (*Free)(T*)>
using Owned = std::unique_ptr<T, decltype([](T* p) { Free(p); })>;

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
}  // namespace

CertificateFiles EnsureCertificate(const std::string& folder)
{
    const CertificateFiles files{folder + "/service.crt", folder + "/service.key"};
    if (std::filesystem::exists(files.certificate) && std::filesystem::exists(files.key))
        return files;

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
    X509_gmtime_adj(X509_getm_notAfter(cert.get()), 10L * 365 * 24 * 3600);
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
