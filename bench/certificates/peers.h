#pragma once

#include <cstddef>

/// What the benchmark's peers do with one certificate (DER). Each returns 0 when it fails, and not
/// 0 otherwise: the octets printed, where it prints.
std::size_t gnutlsImport(const unsigned char *der, std::size_t size);
std::size_t gnutlsImportAndPrint(const unsigned char *der, std::size_t size);
std::size_t opensslParse(const unsigned char *der, std::size_t size);
std::size_t opensslParseAndPrint(const unsigned char *der, std::size_t size);
