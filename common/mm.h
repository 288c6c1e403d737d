// mm.h - memory manager: every dynamic block of the suite's own code is taken and given back here.
//
// Two modes.
//
//  Normal mode (the default, and again after mm_stat_end): a thin layer over the C heap that only
//  checks its arguments. Blocks have no guards; the caller gets the heap address itself. Nothing is
//  logged.
//
//  Guarded mode (for one run, switched on by a command-line argument "$m..." or "$M..." that
//  mm_stat_begin sees): every block is surrounded by guard words, checked on release; up to
//  MM_WATCH_MAX blocks can be watched and are checked on every allocation and release; every
//  allocation, release and check is written to the binary log MMBIN.MM in the current directory,
//  for the analysis tool MMCH32.EXE.
//
// The mode changes only at mm_stat_begin and mm_stat_end, never while blocks of the other mode
// are alive: the two modes hand different addresses to the heap. (The one accepted exception:
// guarded blocks still alive after mm_stat_end are released at process end by mm_release with
// the user-area address; they are never touched again.)
//
// Every allocating and releasing call carries a place: the caller's source file and line. The
// suite's modules pass their module name ("st", "file", ...) and __LINE__; other code passes
// MM_HERE. The log keeps only the text after the last backslash of the file (a name without a
// backslash whole; a null file is logged as "UNKNOWN") and cuts it to MM_NAME_MAX characters.
//
// Programming errors (sizes below 1, a null block to mm_check, a full watched table) are reported
// with InternalError("mm", line) (common/we.h). Heap exhaustion is not reported here: the call
// returns null and the caller treats it as out of memory.
//
// One thread only: the shared log records, the sequence number and the watched table have no
// lock; every caller runs on the program's one GUI thread.
//
// ---- Guarded block ---------------------------------------------------------------------------
//
// A request of size bytes takes size + 800 bytes from the heap:
//
//   offset 0            head guard   400 bytes   100 32-bit words, each equal to size
//   offset 400          user area    size bytes  what the caller gets (zero-filled by the
//                                                zeroing allocators)
//   offset 400 + size   tail guard   400 bytes   100 32-bit words, each equal to size
//
// (For mm_calloc, size is count * size.) A block is intact when the 100 head words are equal to
// one another and the 100 tail words are equal to one another, the tail being found by taking
// the first head word as the size. Only neighbours are compared (99 comparisons per guard): the
// guards are not compared with each other nor with the request, so a write that gives all 100
// tail words one same new value is not noticed. A head whose size word would put the tail beyond
// the heap block counts as a damaged head (the tail is then not read).
//
// ---- The log file MMBIN.MM --------------------------------------------------------------------
//
// Binary, little-endian, no file header, records back to back, written field by field. Opened
// "wb" (an earlier log of the current directory is replaced); flushed after every record so that
// the log is complete up to a crash.
//
// Allocation record, 38 bytes (MM_RECORD_SIZE), one per logged event:
//
//   offset  width     field
//    0      u16       kind (MM_KIND_*)
//    2      u32       address of the user area concerned; 0 when an allocation was refused or
//                     failed. Addresses are 32-bit: the 64-bit native build writes the low 32 bits.
//    6      u32       requested size in bytes; for mm_calloc the element size; 0xFFFFFFFF for
//                     releases and checks (kinds 6, 8)
//   10      u32       element count: written by mm_calloc (kind 5) only
//   14      u32       sequence number
//   18      char[14]  base name of the caller's file, at most 13 characters, NUL-terminated,
//                     the rest of the field zero
//   32      u32       caller's line
//   36      u16       error flag: 1 = request refused, heap failure or damage found; 0 = fine
//
// Kinds 2 to 8 reuse one shared record: a field that an entry does not write keeps the value of
// the previous entry (the element count written by a kind 5 entry stays in every later record
// until the next kind 5; kinds 2 and 3 write only kind and sequence number). Kind 1 entries have
// a record of their own that carries kind, sequence number, name and line; its address, size,
// count and error flag are 0.
//
// Text record, 210 bytes (MM_TEXT_RECORD_SIZE), directly after the allocation record of kinds
// 1, 2 and 3:
//
//   offset  width     field
//    0      u32       year (local time)
//    4      u8        day of month
//    5      u8        month (1 = January)
//    6      u8        minute
//    7      u8        hour
//    8      u8        hundredths of a second (milliseconds / 10)
//    9      u8        second
//   10      char[200] text, Windows-1250, NUL-terminated (at most 199 characters, longer text is
//                     cut), the rest of the field zero
//
// Kinds:
//   1  mm_log, and the manager's own damage messages     text: the formatted message
//   2  mm_stat_begin: statistics started                 text: command line (see mm_stat_begin)
//   3  mm_stat_end: statistics ended                     text: command line
//   4  mm_alloc       5  mm_calloc       6  mm_free       7  mm_zalloc (and mm_zalloc_anon)
//   8  mm_check_release
//
// Sequence numbers start at 1 with the kind 2 record (which does not advance them). Each
// allocation (refused or not) and each mm_log entry advances the number after its record; mm_free
// and mm_check_release advance it right after taking it, before their record and messages are
// written. A damage message written during an allocation therefore carries the allocation's own
// number.
#ifndef KX_MM_H
#define KX_MM_H

#include "common/co.h"

// Sizes of the log's records and fields, and of the guarded block's parts.
enum {
  MM_RECORD_SIZE = 38,
  MM_TEXT_RECORD_SIZE = 210,
  MM_NAME_SIZE = 14,  // name field; the name itself is cut to MM_NAME_MAX characters
  MM_NAME_MAX = MM_NAME_SIZE - 1,
  MM_TEXT_SIZE = 200,  // text field; at most 199 characters
  MM_GUARD_WORDS = 100,
  MM_GUARD_SIZE = 400,  // bytes of each guard; the user area starts this far into the block
  MM_WATCH_MAX = 100    // entries of the watched table
};

enum {
  MM_KIND_LOG = 1,
  MM_KIND_BEGIN = 2,
  MM_KIND_END = 3,
  MM_KIND_ALLOC = 4,
  MM_KIND_CALLOC = 5,
  MM_KIND_FREE = 6,
  MM_KIND_ZALLOC = 7,
  MM_KIND_CHECK_RELEASE = 8
};

// The log's name, in the current directory.
extern const char MM_LOG_NAME[];  // "MMBIN.MM"

// Sequence number of an allocation that is put into the watched table automatically as soon as
// it is made. 0xFFFFFFFF, which matches no allocation; a developer changes it in the debugger to
// watch the block of a sequence number seen in an earlier log. Nothing in the program writes it.
extern uint32_t mm_watch_seq;

// ---- Start and end ---------------------------------------------------------------------------

void mm_stat_begin(int argc, const char *const *argv);
// Called once at program start, before any other allocation, by the window toolkit's
// program-lifetime object, with the process arguments (argv[0] the program's path). Switches
// guarded mode on when any of argv[1..argc-1] begins with '$' followed by 'm' or 'M' ("$m",
// "$M", "$mfoo" do; "m", "-m", "$x" do not); otherwise stays in normal mode and creates no file.
// Guarded mode is switched on at most once per run: later calls do nothing.
// On: opens MMBIN.MM "wb"; when that fails, prints "Nelze otevrit soubor MMBIN.MM!" (no line end)
// to standard output and stays in normal mode. Else writes a kind 2 record with sequence
// number 1 and a text record whose text is every argument, argv[0] first, each followed by one
// blank (cut at 199 characters), and starts the file layer's open-file statistics
// (statistics_start, common/file.h). A null argv counts as no arguments.

void mm_stat_end(void);
// Called at program end by the destructor of the same object. Only in guarded mode: ends the
// file layer's open-file statistics (statistics_end), writes a kind 3 record and the text record
// with the command line, closes the log, prints
// "\nStatistika alokace pameti aktivni - spust program MMCH32.EXE !!!\n" to standard output and
// returns to normal mode for the rest of the run. In normal mode it does nothing.

// ---- Allocation ------------------------------------------------------------------------------

void *mm_alloc(int32_t size, const char *file, int32_t line);
// Returns a block of size bytes, contents undefined, or null.
// Normal mode: size < 1 -> InternalError, null. Heap failure -> null (no report).
// Guarded mode: writes a kind 4 record. size < 1 -> record with error flag 1, InternalError,
// null. Heap failure -> record with address 0 and error flag 1, null.

void *mm_calloc(int32_t count, int32_t size, const char *file, int32_t line);
// Returns a zero-filled block of count * size bytes, or null.
// Normal mode: count < 1 or size < 1 -> InternalError, null. Heap failure (also a product too
// large for the heap) -> null.
// Guarded mode: writes a kind 5 record (size field: size; count field: count). count < 1 or
// size < 1 -> record with error flag 1, InternalError, null. A product above 0x7FFFFFFF, or heap
// failure -> record with address 0 and error flag 1, null, no report.

void *mm_zalloc(int32_t size, const char *file, int32_t line);
// Returns a zero-filled block of size bytes, or null. The allocator of objects and buffers of
// the toolkit, the file layer and the text modules.
// Normal mode: size < 1 -> InternalError, null. Heap failure -> null.
// Guarded mode: writes a kind 7 record. size < 1 -> record with error flag 1, null, and NO
// report (kept so: the guarded run only logs these). Heap failure -> record with address 0 and
// error flag 1, null.

void *mm_zalloc_anon(int32_t size);
// As mm_zalloc for callers without a place; the place is "UNKNOWN", line 0.
// Normal mode: as mm_zalloc.
// Guarded mode: a guarded block like mm_zalloc's, but a successful call writes no record, does
// not advance the sequence number and neither registers nor checks watched blocks. size < 1 ->
// kind 7 record with error flag 1 (sequence number advanced), null, no report. Heap failure ->
// null, nothing written.

// Every guarded allocation above that writes its record then (in this order): puts the block
// into the watched table when its sequence number equals mm_watch_seq; checks every watched
// block and writes, for each damaged one, a kind 1 message
// "      Chyba! Pamet kontrolovaneho ukazatele XXXXXXXX byla prepsana!" (the block's address as
// 8 upper-case hex digits, the low 32 bits) with the allocation's own file and line; advances the
// sequence number.

// ---- Release ---------------------------------------------------------------------------------

void mm_free(void *block, const char *file, int32_t line);
// Checks and releases a block from any allocator above. A null block is allowed.
// Normal mode: releases a non-null block; ignores null.
// Guarded mode: removes the block from the watched table, writes a kind 6 record (size field
// 0xFFFFFFFF); a null block gets error flag 1 and nothing else happens (no report). Otherwise
// the error flag is 1 when a guard is damaged, and then the kind 1 message
// "      Chyba! Uvolnovana pamet byla na zacatku nebo konci bloku prepsana" follows (with the
// caller's place); then every watched block is checked as after an allocation; then the heap
// block is released, damaged or not. Damage never stops the program.

void mm_check_release(void *block, const char *file, int32_t line);
// The check half of a release done by mm_release: object destructors call mm_check_release and
// then mm_release. Does not release the block.
// Normal mode: does nothing.
// Guarded mode: a null block -> kind 8 record with error flag 1, nothing else. Otherwise writes,
// for a damaged head guard, "      Chyba! Uvolnovana pamet byla na zacatku bloku prepsana", for
// an intact head with a damaged tail "      Chyba! Uvolnovana pamet byla na konci bloku
// prepsana" (kind 1, caller's place), THEN the kind 8 record (size field 0xFFFFFFFF, error flag 1
// when either guard is damaged); then removes the block from the watched table and checks every
// watched block as after an allocation.

void mm_release(void *block);
// Gives the block back to the heap without any check or record: in guarded mode the heap block
// (400 bytes before block), in normal mode block itself. A null block is ignored. The watched
// table is not touched: release a watched block only after mm_check_release (or mm_unwatch).

// ---- Checks and the watched table ------------------------------------------------------------

Flag mm_check(void *block);
// 1 when the guards of the guarded block are intact (see above), 0 when damaged. A null block ->
// InternalError, 0. Meaningful in guarded mode only: in normal mode the caller must not pass a
// block without guards (the check would read before the block).

void mm_log(const char *file, int32_t line, const char *format, ...) KX_PRINTF(3, 4);
// Guarded mode: writes a kind 1 record with the place and a text record with the message
// formatted printf-style (cut at 199 characters) and advances the sequence number. A null format
// logs an empty text. Normal mode: does nothing.

Flag mm_watch(void *block);
// Guarded mode: puts block into the first free slot of the 100-entry watched table and returns
// 1; a full table -> InternalError, 0. (A null block leaves the table as it is: 0 marks a free
// slot.) Normal mode: returns 1 at once.

Flag mm_unwatch(void *block);
// Removes every table entry equal to block. Always returns 1 (normal mode: at once).

Flag mm_test_watched(const char *file, int32_t line);
// Guarded mode: logs "Test kontrolovanych ukazatelu" (kind 1, the given place), then checks every
// watched block, logging the damaged-pointer message (see the allocators) for each damaged one.
// Returns 1 when every watched block is intact, else 0. Normal mode: returns 1 at once.

// ---- For tests only --------------------------------------------------------------------------
// Product code never calls these.

void mm_test_reset(void);
// Puts the manager back into its state at process start so that one test program can run
// guarded mode more than once: normal mode, guarded mode not yet started, sequence number 0,
// empty watched table, mm_watch_seq 0xFFFFFFFF, shared records cleared, failure injection off.
// While guarded mode is on it first ends the file layer's open-file statistics (statistics_end:
// their table is a guarded block, released and logged as usual), then closes the log without a
// kind 3 record and without the console message. Every other block of the previous mode must
// have been released before.

void mm_test_fail_after(int32_t n);
// Out-of-memory injection: n >= 0 lets the next n heap requests of the manager succeed and makes
// the one after them fail as if the heap were exhausted (one failure only; then injection is off
// again). Negative n switches injection off. Heap requests are the manager's calls to the heap
// for a block, in both modes (every successful-looking allocation call makes exactly one);
// refused requests (sizes below 1) make none.

// The caller's place, as every allocating and releasing call carries it.
#define MM_HERE __FILE_NAME__, __LINE__

#endif
