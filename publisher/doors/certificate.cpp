#include "publisher/doors/certificate.h"

#include "publisher/machine.h"
#include "sender/open/descriptor.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gnutls/crypto.h>
#include <gnutls/gnutls.h>
#include <gnutls/x509.h>
#include <netinet/in.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <stdexcept>

namespace quillo::publisher {

namespace {

constexpr long years = 10;
constexpr std::time_t a_day = 24 * 60 * 60;

void require(int result, char const* what)
{
    if (result < 0)
        throw std::runtime_error{std::string{what} + ": " + gnutls_strerror(result)};
}

// The two objects of GnuTLS that are needed here, each with its own pair of functions.
struct private_key
{
    gnutls_x509_privkey_t it = nullptr;
    private_key() { require(gnutls_x509_privkey_init(&it), "key"); }
    ~private_key() { gnutls_x509_privkey_deinit(it); }
    private_key(private_key const&) = delete;
    private_key& operator=(private_key const&) = delete;
};

struct x509_certificate
{
    gnutls_x509_crt_t it = nullptr;
    x509_certificate() { require(gnutls_x509_crt_init(&it), "certificate"); }
    ~x509_certificate() { gnutls_x509_crt_deinit(it); }
    x509_certificate(x509_certificate const&) = delete;
    x509_certificate& operator=(x509_certificate const&) = delete;
};

template <class Export>
std::string pem(Export write)
{
    gnutls_datum_t text{};
    require(write(&text), "PEM");
    std::string const result{reinterpret_cast<char const*>(text.data), text.size};
    gnutls_free(text.data);
    return result;
}

void add_names(gnutls_x509_crt_t to, std::string const& machine)
{
    require(gnutls_x509_crt_set_dn_by_oid(to, GNUTLS_OID_X520_COMMON_NAME, 0, machine.data(),
                                          static_cast<unsigned>(machine.size())),
            "name");
    for (auto const& name : {machine, machine + ".local", std::string{"localhost"}})
        require(gnutls_x509_crt_set_subject_alt_name(to, GNUTLS_SAN_DNSNAME, name.data(),
                                                     static_cast<unsigned>(name.size()), GNUTLS_FSAN_APPEND),
                "name");
    in_addr const v4{htonl(INADDR_LOOPBACK)};
    require(gnutls_x509_crt_set_subject_alt_name(to, GNUTLS_SAN_IPADDRESS, &v4, sizeof v4, GNUTLS_FSAN_APPEND), "name");
    require(gnutls_x509_crt_set_subject_alt_name(to, GNUTLS_SAN_IPADDRESS, &in6addr_loopback, sizeof in6addr_loopback,
                                                 GNUTLS_FSAN_APPEND),
            "name");
}

struct pem_pair
{
    std::string certificate;
    std::string key;
};

pem_pair signed_by_itself(std::string const& machine)
{
    private_key key;
    require(gnutls_x509_privkey_generate(key.it, GNUTLS_PK_ECDSA, GNUTLS_CURVE_TO_BITS(GNUTLS_ECC_CURVE_SECP256R1), 0),
            "key");
    x509_certificate made;
    std::array<unsigned char, 16> serial;
    require(gnutls_rnd(GNUTLS_RND_NONCE, serial.data(), serial.size()), "serial number");
    serial[0] &= 0x7F;
    std::time_t const now = std::time(nullptr);
    require(gnutls_x509_crt_set_version(made.it, 3), "version");
    require(gnutls_x509_crt_set_serial(made.it, serial.data(), serial.size()), "serial number");
    require(gnutls_x509_crt_set_activation_time(made.it, now - a_day), "time"); // clocks differ
    require(gnutls_x509_crt_set_expiration_time(made.it, now + years * 365 * a_day), "time");
    add_names(made.it, machine);
    require(gnutls_x509_crt_set_key(made.it, key.it), "key");
    require(gnutls_x509_crt_set_basic_constraints(made.it, 0, -1), "use");
    require(gnutls_x509_crt_set_key_usage(made.it, GNUTLS_KEY_DIGITAL_SIGNATURE), "use");
    require(gnutls_x509_crt_set_key_purpose_oid(made.it, GNUTLS_KP_TLS_WWW_SERVER, 0), "use");
    require(gnutls_x509_crt_sign2(made.it, made.it, key.it, GNUTLS_DIG_SHA256, 0), "signature");
    return {pem([&](gnutls_datum_t* to) { return gnutls_x509_crt_export2(made.it, GNUTLS_X509_FMT_PEM, to); }),
            pem([&](gnutls_datum_t* to) { return gnutls_x509_privkey_export2(key.it, GNUTLS_X509_FMT_PEM, to); })};
}

void write_file(std::string const& path, std::string const& text)
{
    // Whole or not at all, and never readable by others, not even for a moment.
    std::string const fresh = path + ".new";
    ::unlink(fresh.c_str());
    open::descriptor file{::open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600)};
    bool const written = file && ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (!written || ::rename(fresh.c_str(), path.c_str()) != 0)
        throw std::runtime_error{path + ": " + std::strerror(errno)};
}

} // namespace

std::shared_ptr<GTlsCertificate> read_certificate(std::string const& certificate_file, std::string const& key_file)
{
    GError* error = nullptr;
    GTlsCertificate* const made = g_tls_certificate_new_from_files(certificate_file.c_str(), key_file.c_str(), &error);
    error_ptr const owned{error};
    if (!made)
        throw std::runtime_error{"the certificate in " + certificate_file + " with the key in " + key_file +
                                 " cannot be used: " + owned->message};
    return {made, g_object_unref};
}

std::string own_certificate_folder() { return (std::filesystem::path{g_get_user_data_dir()} / "quillo").string(); }

std::shared_ptr<GTlsCertificate> own_certificate(std::string const& folder)
{
    std::string const certificate = folder + "/certificate.pem";
    std::string const key = folder + "/key.pem";
    std::error_code none;
    if (!std::filesystem::exists(certificate, none) || !std::filesystem::exists(key, none)) {
        std::filesystem::create_directories(folder);
        auto const made = signed_by_itself(machine_name());
        write_file(key, made.key);
        write_file(certificate, made.certificate);
    }
    struct stat found
    {
    };
    if (::lstat(key.c_str(), &found) != 0 || found.st_uid != ::getuid() || (found.st_mode & (S_IRWXG | S_IRWXO)))
        throw std::runtime_error{key + " is not the user's alone (mend it with: chmod 600 '" + key + "')"};
    return read_certificate(certificate, key);
}

std::string fingerprint(GTlsCertificate* of)
{
    GByteArray* bytes = nullptr;
    g_object_get(of, "certificate", &bytes, nullptr);
    std::unique_ptr<GByteArray, releases<g_byte_array_unref>> const owned{bytes};
    string_ptr const digits{g_compute_checksum_for_data(G_CHECKSUM_SHA256, bytes->data, bytes->len)};
    std::string result;
    for (char const* at = digits.get(); *at; at += 2) {
        if (!result.empty())
            result += ':';
        result += static_cast<char>(g_ascii_toupper(at[0]));
        result += static_cast<char>(g_ascii_toupper(at[1]));
    }
    return result;
}

} // namespace quillo::publisher
