// zlib_fixtures.h - zlib streams made by another producer (Python's zlib module over zlib
// 1.2.13), kept as hex so that the unpacker is checked against streams it did not write:
//   plain = (kText * 3).encode("cp1250")
//   zlib.compress(plain, n) for n in 0, 1, 6, 9; zlib.compress(bytes(1 << 20), 9)
// Level 0 is one stored block: kStoredHead + plain + kAdler. Levels 1, 6 and 9 give the same
// body for this input (kBody, Adler-32 included) behind their own header bytes; the body less
// its 4-byte trailer is also what compressobj(6, DEFLATED, -15) writes (raw deflate). The
// megabyte of zeros is kZerosHead, kZerosRun zero bytes, kZerosTail.
#ifndef KX_TEST_ZLIB_FIXTURES_H
#define KX_TEST_ZLIB_FIXTURES_H

#include <stddef.h>

namespace zfix {

const char kText[] =
    "Vlož DISK 2\r\nNelze otevřít soubor KORV5.EXE\r\nPřerušit instalaci ?\r\n"
    "schéma, knihovna, deska plošných spojů, součástka; SYSTEM.WCO\r\n";
const char kStoredHead[] = "780101860179fe", kAdler[] = "d26b904c";
const char kHeader1[] = "7801", kHeader6[] = "789c", kHeader9[] = "78da";
const char kBody[] =
    "0bcbc99fa7e0e219ecad60c4cbe5979a5395aa905f925af6e36d8942717e69527e9182b77f5098a99e6b842b2f57"
    "c08fd4a2d25999250a9979c525893989c9990af6bc5cc5c9192f73137514b2f33233f2cbf280ac94d4e2ec4485829c"
    "fc"
    "59797f9333148a0bf2b37eea80cc7bf1b0b8243bd15a21383238c4d5572fdcd99f972b6cd4055c00d26b904c";
const char kZerosHead[] = "78daedc13101000000c2a0f54f6d085fa0", kZerosTail[] = "3e0300f00001";
const size_t kZerosRun = 1016, kMegabyte = 1 << 20;

}  // namespace zfix

#endif
