// unpack_bench.cpp - our unpacker against zlib's one-call uncompress into a buffer of the right
// size, over the files that gen_payload.py unpack writes (16 MiB of plain data at compression
// ratios 1.5, 4, 10 and 100).
//
// Usage: unpack_bench DIR [RUNS]      (RUNS at least 5, default 7)
//
// For each file two pairs are timed, each pair alternated RUNS times (A, B, A, B, ...):
//   buffer:  DecompressBuffer of the packed bytes in memory, then mm_free
//            against malloc of the plain size + uncompress + free
//   file:    DecompressFile from DIR/rN.z to a target file
//            against one fread of the packed file, uncompress into a right-sized buffer and one
//            fwrite to a target file
// and printed as medians in ms and as the speed ratio B/A (1.00: as fast as raw zlib; the
// target is at least 0.90 up to ratio 10). Both results are compared byte for byte once.
// Builds for Windows (run under Wine) and natively (for perf and callgrind).
#include <chrono>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/mm.h"
#include "pack/copy.h"
#include "pack/zip_util.h"

namespace {

double now_ms() {
  using namespace std::chrono;
  return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  size_t n = v.size();
  return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

bool read_file(const std::string &path, std::string *data) {
  FILE *f = fopen(path.c_str(), "rb");
  if (!f) return false;
  fseek(f, 0, SEEK_END);
  long n = ftell(f);
  fseek(f, 0, SEEK_SET);
  data->resize((size_t)n);
  bool ok = n == 0 || fread(&(*data)[0], 1, (size_t)n, f) == (size_t)n;
  fclose(f);
  return ok;
}

// The raw road from file to file: one read, uncompress into the right size, one write.
bool raw_file(const std::string &source, const std::string &target, uLong plain_size) {
  std::string packed;
  if (!read_file(source, &packed)) return false;
  unsigned char *out = (unsigned char *)malloc(plain_size);
  uLongf n = plain_size;
  bool ok = out &&
            uncompress(out, &n, (const Bytef *)packed.data(), (uLong)packed.size()) == Z_OK &&
            n == plain_size;
  FILE *f = ok ? fopen(target.c_str(), "wb") : nullptr;
  ok = f && fwrite(out, 1, n, f) == n;
  if (f && fclose(f) != 0) ok = false;
  free(out);
  return ok;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: unpack_bench DIR [RUNS]\n");
    return 2;
  }
  std::string dir = argv[1];
  if (!dir.empty() && dir.back() != '/' && dir.back() != '\\') dir += '/';
  int runs = argc > 2 ? std::max(5, atoi(argv[2])) : 7;
  FILE *index = fopen((dir + "UNPACK.TXT").c_str(), "r");
  if (!index) {
    fprintf(stderr, "unpack_bench: no %sUNPACK.TXT\n", dir.c_str());
    return 2;
  }
  printf("%-8s %7s %9s | %9s %9s %6s | %9s %9s %6s\n", "file", "ratio", "plain", "DecBuf ms",
         "uncomp ms", "speed", "DecFile", "raw file", "speed");
  char name[64];
  unsigned long plain_size, packed_size;
  int failures = 0;
  while (fscanf(index, "%63s %lu %lu", name, &plain_size, &packed_size) == 3) {
    std::string packed, source = dir + name;
    if (!read_file(source, &packed) || packed.size() != packed_size) {
      fprintf(stderr, "unpack_bench: cannot read %s\n", source.c_str());
      return 2;
    }
    std::vector<double> dec_buf, raw_buf, dec_file, raw_file_ms;
    for (int r = 0; r < runs; r++) {
      // Buffer pair; the order inside the pair alternates from run to run.
      for (int half = 0; half < 2; half++) {
        bool ours = (half == 0) == (r % 2 == 0);
        double t0 = now_ms();
        if (ours) {
          ZipUtil zip;
          ZipInit(&zip);
          unsigned char *out = nullptr;
          uint32_t n = 0;
          Flag ok = DecompressBuffer(&zip, packed.data(), (uint32_t)packed.size(), &out, &n);
          double t1 = now_ms();
          if (!ok || n != plain_size) failures++;
          if (r == 0 && ok) {  // compare with zlib's own result once (outside the timing)
            std::vector<unsigned char> ref(plain_size);
            uLongf m = plain_size;
            if (uncompress(ref.data(), &m, (const Bytef *)packed.data(), (uLong)packed.size()) !=
                    Z_OK ||
                m != n || memcmp(ref.data(), out, n) != 0) {
              fprintf(stderr, "unpack_bench: %s: DecompressBuffer differs from uncompress\n", name);
              failures++;
            }
          }
          double t2 = now_ms();
          mm_free(out, MM_HERE);
          dec_buf.push_back((t1 - t0) + (now_ms() - t2));
        } else {
          unsigned char *out = (unsigned char *)malloc(plain_size);
          uLongf n = plain_size;
          if (!out ||
              uncompress(out, &n, (const Bytef *)packed.data(), (uLong)packed.size()) != Z_OK)
            failures++;
          free(out);
          raw_buf.push_back(now_ms() - t0);
        }
      }
      // File pair.
      for (int half = 0; half < 2; half++) {
        bool ours = (half == 0) == (r % 2 == 0);
        double t0 = now_ms();
        if (ours) {
          ZipUtil zip;
          ZipInit(&zip);
          if (!DecompressFile(&zip, source.c_str(), "unpack_ours.out")) failures++;
          dec_file.push_back(now_ms() - t0);
        } else {
          if (!raw_file(source, "unpack_raw.out", plain_size)) failures++;
          raw_file_ms.push_back(now_ms() - t0);
        }
      }
    }
    std::string a, b;
    if (!read_file("unpack_ours.out", &a) || !read_file("unpack_raw.out", &b) || a != b ||
        a.size() != plain_size) {
      fprintf(stderr, "unpack_bench: %s: the two target files differ\n", name);
      failures++;
    }
    remove("unpack_ours.out");
    remove("unpack_raw.out");
    double mb = median(dec_buf), mr = median(raw_buf), fb = median(dec_file),
           fr = median(raw_file_ms);
    printf("%-8s %7.2f %9lu | %9.1f %9.1f %5.2fx | %9.1f %9.1f %5.2fx\n", name,
           (double)plain_size / (double)packed_size, plain_size, mb, mr, mr / mb, fb, fr, fr / fb);
    fflush(stdout);
  }
  fclose(index);
  // CopyFile (the installer copies every packed file, and every unpacked file of a
  // subdirectory, once more) against one fread and one fwrite of the whole file.
  {
    std::string source = dir + "r1.5.z", data;
    std::vector<double> ours, raw;
    for (int r = 0; r < runs; r++)
      for (int half = 0; half < 2; half++) {
        bool mine = (half == 0) == (r % 2 == 0);
        double t0 = now_ms();
        if (mine) {
          if (!CopyFile(source.c_str(), "copy_ours.out")) failures++;
          ours.push_back(now_ms() - t0);
        } else {
          FILE *f = read_file(source, &data) ? fopen("copy_raw.out", "wb") : nullptr;
          if (!f || fwrite(data.data(), 1, data.size(), f) != data.size()) failures++;
          if (f) fclose(f);
          raw.push_back(now_ms() - t0);
        }
      }
    std::string a, b;
    if (!read_file("copy_ours.out", &a) || !read_file("copy_raw.out", &b) || a != b) {
      fprintf(stderr, "unpack_bench: the two copies differ\n");
      failures++;
    }
    remove("copy_ours.out");
    remove("copy_raw.out");
    printf(
        "CopyFile of r1.5.z (%lu bytes): %.1f ms, one fread + one fwrite: %.1f ms, speed %.2fx\n",
        (unsigned long)a.size(), median(ours), median(raw), median(raw) / median(ours));
  }
  printf("(%d runs each, alternated pairs, medians; speed = raw time / our time)\n", runs);
  if (failures) printf("unpack_bench: %d FAILURES\n", failures);
  return failures ? 1 : 0;
}
