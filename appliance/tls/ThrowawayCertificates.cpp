#include "ThrowawayCertificates.h"

#include <openssl/asn1.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace Appliance {

namespace {

constexpr long kMinute = 60;
constexpr long kDay = 24 * 60 * kMinute;

// Seconds from now.
struct Validity {
    long from;
    long until;
};

// A minute back: clocks that are read one after the other may differ by a second.
constexpr Validity kToday{-kMinute, kDay};
constexpr Validity kYesterday{-2 * kDay, -kDay};

[[noreturn]] void fail(const std::string& what)
{
    std::array<char, 256> reason{};
    ERR_error_string_n(ERR_get_error(), reason.data(), reason.size());
    throw std::runtime_error(what + ": " + reason.data());
}

void require(bool ok, const char* what)
{
    if (!ok)
        fail(what);
}

void setRandomSerial(X509* certificate)
{
    std::array<unsigned char, 8> bytes{};
    require(RAND_bytes(bytes.data(), bytes.size()) == 1, "RAND_bytes");
    std::uint64_t serial = 1;
    for (unsigned char byte : bytes)
        serial = (serial << 8) ^ byte;
    require(ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), serial >> 1) == 1, "serial number");
}

Certificate blank(const std::string& commonName, Validity validity)
{
    Certificate made{std::unique_ptr<X509, OpenSslDeleter>(X509_new()),
                     std::unique_ptr<EVP_PKEY, OpenSslDeleter>(EVP_EC_gen("P-256"))};
    require(made.x509 && made.key, "key pair");
    X509* certificate = made.x509.get();
    require(X509_set_version(certificate, X509_VERSION_3) == 1, "version");
    setRandomSerial(certificate);
    require(X509_gmtime_adj(X509_getm_notBefore(certificate), validity.from) != nullptr, "notBefore");
    require(X509_gmtime_adj(X509_getm_notAfter(certificate), validity.until) != nullptr, "notAfter");
    require(X509_set_pubkey(certificate, made.key.get()) == 1, "public key");
    require(X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1,
                                       0) == 1,
            "subject");
    return made;
}

void addExtension(X509* certificate, X509* issuer, int nid, const char* value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value);
    require(extension != nullptr, value);
    const int added = X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
    require(added == 1, value);
}

bool isAddress(const std::string& host)
{
    ASN1_OCTET_STRING* octets = a2i_IPADDRESS(host.c_str());
    ASN1_OCTET_STRING_free(octets);
    ERR_clear_error();
    return octets != nullptr;
}

void addHosts(X509* certificate, const Hosts& hosts)
{
    std::unique_ptr<GENERAL_NAMES, decltype(&GENERAL_NAMES_free)> names(GENERAL_NAMES_new(),
                                                                        &GENERAL_NAMES_free);
    require(names != nullptr, "subjectAltName");
    for (const std::string& host : hosts) {
        GENERAL_NAME* name = a2i_GENERAL_NAME(nullptr, nullptr, nullptr,
                                              isAddress(host) ? GEN_IPADD : GEN_DNS, host.c_str(), 0);
        require(name != nullptr, host.c_str());
        require(sk_GENERAL_NAME_push(names.get(), name) > 0, host.c_str());
    }
    require(X509_add1_ext_i2d(certificate, NID_subject_alt_name, names.get(), 0, X509V3_ADD_DEFAULT) == 1,
            "subjectAltName");
}

void sign(Certificate& certificate, const Certificate& issuer)
{
    require(X509_set_issuer_name(certificate.x509.get(), X509_get_subject_name(issuer.x509.get())) == 1,
            "issuer");
    require(X509_sign(certificate.x509.get(), issuer.key.get(), EVP_sha256()) > 0, "X509_sign");
}

Certificate serverCertificate(const Hosts& hosts, Validity validity)
{
    if (hosts.empty())
        throw std::runtime_error("a server certificate needs a host");
    Certificate made = blank("throwaway server", validity);
    addHosts(made.x509.get(), hosts);
    addExtension(made.x509.get(), made.x509.get(), NID_basic_constraints, "critical,CA:FALSE");
    addExtension(made.x509.get(), made.x509.get(), NID_ext_key_usage, "serverAuth");
    return made;
}

Certificate issueBy(const Certificate& authority, const Hosts& hosts, Validity validity)
{
    Certificate made = serverCertificate(hosts, validity);
    addExtension(made.x509.get(), authority.x509.get(), NID_authority_key_identifier, "keyid:always");
    sign(made, authority);
    return made;
}

Certificate makeAuthority()
{
    Certificate made = blank("throwaway authority", kToday);
    X509* certificate = made.x509.get();
    addExtension(certificate, certificate, NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    addExtension(certificate, certificate, NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(certificate, certificate, NID_subject_key_identifier, "hash");
    sign(made, made);
    return made;
}

}  // namespace

ThrowawayCertificates::ThrowawayCertificates() : authority(makeAuthority()) {}

void ThrowawayCertificates::writeAuthority(const std::filesystem::path& file) const
{
    const std::string unfinished = file.string() + ".new";
    std::FILE* out = std::fopen(unfinished.c_str(), "we");
    if (out == nullptr)
        throw std::runtime_error("cannot write " + unfinished);
    const bool written = PEM_write_X509(out, authority.x509.get()) == 1;
    if (std::fclose(out) != 0 || !written)
        throw std::runtime_error("cannot write " + unfinished);
    std::filesystem::rename(unfinished, file);
}

Certificate ThrowawayCertificates::issue(const Hosts& hosts) const
{
    return issueBy(authority, hosts, kToday);
}

Certificate ThrowawayCertificates::issueExpired(const Hosts& hosts) const
{
    return issueBy(authority, hosts, kYesterday);
}

Certificate ThrowawayCertificates::selfSigned(const Hosts& hosts)
{
    Certificate made = serverCertificate(hosts, kToday);
    sign(made, made);
    return made;
}

}  // namespace Appliance
