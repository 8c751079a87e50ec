#include "tests/support/UntrustedServer.h"

#define CPPHTTPLIB_OPENSSL_SUPPORT
#include <httplib.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <thread>

namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

Certificate certify(EVP_PKEY* key) {
  constexpr long hundredYears = 100L * 365 * 24 * 3600;
  Certificate certificate(X509_new(), &X509_free);
  X509_set_version(certificate.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), hundredYears);
  X509_set_pubkey(certificate.get(), key);
  X509_NAME* const name = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("127.0.0.1"), -1, -1, 0);
  X509_set_issuer_name(certificate.get(), name);
  X509_EXTENSION* const names = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1");
  X509_add_ext(certificate.get(), names, -1);
  X509_EXTENSION_free(names);
  X509_sign(certificate.get(), key, EVP_sha256());
  return certificate;
}

}  // namespace

struct UntrustedServer::Server {
  explicit Server(std::string body) {
    http.Get(".*", [this, body = std::move(body)](const httplib::Request&, httplib::Response& response) {
      ++requests;
      response.set_content(body, "text/plain");
    });
    port = http.bind_to_any_port("127.0.0.1");
    thread = std::thread([this] { http.listen_after_bind(); });
    while (!http.is_running()) std::this_thread::yield();
  }
  ~Server() {
    http.stop();
    thread.join();
  }

  Key key{EVP_RSA_gen(2048), &EVP_PKEY_free};
  Certificate certificate = certify(key.get());
  httplib::SSLServer http{certificate.get(), key.get()};
  std::atomic<int> requests = 0;
  int port = 0;
  std::thread thread;
};

UntrustedServer::UntrustedServer(std::string body) : server_(std::make_unique<Server>(std::move(body))) {}
UntrustedServer::~UntrustedServer() = default;

std::string UntrustedServer::url(const std::string& path) const {
  return "https://127.0.0.1:" + std::to_string(server_->port) + path;
}

int UntrustedServer::requests() const {
  return server_->requests;
}
