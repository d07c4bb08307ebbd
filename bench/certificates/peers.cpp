#include "bench/certificates/peers.h"

#include <gnutls/gnutls.h>
#include <gnutls/x509.h>
#include <memory>
#include <openssl/bio.h>
#include <openssl/x509.h>

namespace {

std::size_t byGnutls(const unsigned char *der, std::size_t size, bool print)
{
    gnutls_x509_crt_t certificate = nullptr;
    gnutls_x509_crt_init(&certificate);
    const gnutls_datum_t data = {const_cast<unsigned char *>(der), static_cast<unsigned>(size)};
    std::size_t result = gnutls_x509_crt_import(certificate, &data, GNUTLS_X509_FMT_DER) == 0;
    gnutls_datum_t text = {};
    if (result && print) {
        gnutls_x509_crt_print(certificate, GNUTLS_CRT_PRINT_FULL, &text);
        result = text.size;
        gnutls_free(text.data);
    }
    gnutls_x509_crt_deinit(certificate);
    return result;
}

std::size_t byOpenssl(const unsigned char *der, std::size_t size, bool print)
{
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        d2i_X509(nullptr, &der, static_cast<long>(size)), X509_free);
    if (!certificate || !print)
        return certificate ? 1 : 0;
    const std::unique_ptr<BIO, decltype(&BIO_free)> text(BIO_new(BIO_s_mem()), BIO_free);
    return X509_print(text.get(), certificate.get()) ? BIO_number_written(text.get()) : 0;
}

} // namespace

std::size_t gnutlsImport(const unsigned char *der, std::size_t size)
{
    return byGnutls(der, size, false);
}

std::size_t gnutlsImportAndPrint(const unsigned char *der, std::size_t size)
{
    return byGnutls(der, size, true);
}

std::size_t opensslParse(const unsigned char *der, std::size_t size)
{
    return byOpenssl(der, size, false);
}

std::size_t opensslParseAndPrint(const unsigned char *der, std::size_t size)
{
    return byOpenssl(der, size, true);
}
