#pragma once

#include <QByteArray>

/// Reading a file whole. Names are in the encoding of the file system, as `QFile::encodeName` gives
/// it. Time and memory grow with the file's octets alone.
namespace file_reader {

/// In octets. No certificate comes near, and no file should fill the memory: a larger one is
/// refused, not cut.
constexpr qint64 kMaxFileSize = 64LL * 1024 * 1024;

/// How long a pipe's writer may be silent, without an octet, before it is taken for one that never
/// will be done: the window waits for the file, and must not wait for ever. A command that asks for
/// a password first is slow and alive.
constexpr int kPipePatienceMs = 60000;

/// For what nobody passes by a pipe: what one holds is read, and its writer isn't waited for.
constexpr int kNoPatience = 0;

/// True when anything, of any kind, exists at `path`.
bool exists(const char *path);

/// Reads a regular file, or a pipe up to its writer's end, into `content`. False, with `content`
/// empty, for anything else: a directory, a device, a socket, a pipe without a writer, an
/// unreadable file, one beyond `kMaxFileSize`, or a pipe whose writer is silent for more than
/// `pipePatienceMs`. A file that shrinks meanwhile gives what was read.
bool readWhole(const char *path, QByteArray &content, int pipePatienceMs = kPipePatienceMs);

/// Reads into the caller's `buffer`, which must hold the file and one octet more: nothing is
/// bounded here. `count` receives one more than the octets read, because the attempt that meets the
/// end counts too. False, with count 0 and the buffer untouched, when nothing exists at `path`;
/// true otherwise, also when it can't be read, with what was read until then.
bool readIntoBuffer(const char *path, char *buffer, int &count);

} // namespace file_reader
