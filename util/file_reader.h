#pragma once

#include <QByteArray>

/// Reading a file whole. Names are in the encoding of the file system, as `QFile::encodeName` gives
/// it. Time and memory grow with the file's octets alone.
namespace file_reader {

/// In octets. No certificate comes near, and no file should fill the memory: a larger one is
/// refused, not cut.
constexpr qint64 kMaxFileSize = 64LL * 1024 * 1024;

/// A pipe whose writer isn't done by then is taken for one whose writer never will be: the window
/// waits for the file, and must not wait for ever.
constexpr int kPipePatienceMs = 15000;

/// True when anything, of any kind, exists at `path`.
bool exists(const char *path);

/// Reads a regular file, or a pipe up to its writer's end, into `content`. False, with `content`
/// empty, for anything else: a directory, a device, a socket, a pipe without a writer, an
/// unreadable file, one beyond `kMaxFileSize`, or a pipe beyond `kPipePatienceMs`. A file that
/// shrinks meanwhile gives what was read.
bool readWhole(const char *path, QByteArray &content);

/// Reads into the caller's `buffer`, which must hold the file and one octet more: nothing is
/// bounded here. `count` receives one more than the octets read, because the attempt that meets the
/// end counts too. False, with count 0 and the buffer untouched, when nothing exists at `path`;
/// true otherwise, also when it can't be read, with what was read until then.
bool readIntoBuffer(const char *path, char *buffer, int &count);

} // namespace file_reader
