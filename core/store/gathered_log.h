#pragma once

// A way of opening the data file whose writes to its log are gathered into
// large ones.
//
// SQLite appends a page to the log as two writes, a 24-byte frame header and
// the page, so a page never starts on a page of the file. A review decision
// across twenty years touches thousands of pages: thousands of small writes,
// each straddling two pages of the kernel's cache, and when the log is being
// written over from its start, each reads and merges what was there. Gathered
// into runs of 64 KiB, the same bytes take a tenth of the time.
//
// Nothing is lost that SQLite counts on. What is gathered reaches the file
// before the log is read, sized, cut short, synced or closed. With
// `synchronous = FULL`, which every connection opened this way must keep,
// SQLite syncs the log at each commit before it tells other connections of
// the commit, so they never look for a frame still gathered here; and frames
// a kill keeps from the file were never committed, as if the kill had come a
// moment sooner.

namespace copperwick::detail {

// The name to pass to sqlite3_open_v2. Registered on first use; every other
// file the connection opens (the data file, a journal) is the platform's own.
[[nodiscard]] const char* gatheredLogVFS();

}  // namespace copperwick::detail
