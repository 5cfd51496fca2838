#pragma once

#include <QByteArray>

// The cipher of password-protected Paradox tables (Paradox 4 and later). The
// header keeps a 32-bit checksum of the password; the data blocks are
// scrambled in 256-byte chunks, each with a key made from that checksum, the
// chunk's place in its block and the block's number. Decrypting needs only
// the checksum, so the password is checked against it before anything is
// read.
namespace tarnby::tables {

// The checksum a table protected by password keeps in its header (0 for an
// empty password).
quint32 paradoxPasswordChecksum(const QByteArray &password);

// Scrambles or unscrambles one 256-byte chunk of data block blockNumber
// (counted from 1) in place; chunk is its index within the block.
void encryptParadoxChunk(uchar *data, quint32 checksum, int chunk, int blockNumber);
void decryptParadoxChunk(uchar *data, quint32 checksum, int chunk, int blockNumber);

} // namespace tarnby::tables
