#pragma once

// A way of opening the data file whose writes to the file and its log are
// gathered into large ones.
//
// SQLite writes one page per call. An import straight into the file adds
// thousands of pages at its end; a review decision across twenty years
// touches thousands spread through it, and appends each to the log as a
// 24-byte frame header and the page, so that no page of the log starts on a
// page of the file and every write straddles two pages of the kernel's cache.
// Gathered into runs of up to 64 KiB, the same bytes cost a tenth of the
// calls (the README gives the time saved).
//
// Nothing is lost that SQLite counts on. What is gathered reaches the file
// before SQLite does anything else with it: reads, maps, sizes, cuts, syncs,
// locks, shares memory through it, closes it, or asks it anything. SQLite
// syncs (or at least asks the file to sync) a journal's or a log's pages to
// the file before it lets go of the journal or tells other connections of
// the commit, so nobody looks for a page still gathered here; and pages a
// kill keeps from the file were not yet committed, as if the kill had come a
// moment sooner.

namespace copperwick::detail {

// The name to pass to sqlite3_open_v2, or null when it couldn't be set up:
// then files open the platform's way and only lose the gathering.
// Registered on first use. Journals and temporary files are the platform's.
[[nodiscard]] const char* gatheredWritesVFS();

}  // namespace copperwick::detail
