#pragma once

// JSON written piece by piece, for answers too large to build as one value
// first: a bank file of a million rows is a few hundred bytes of JSON per row
// as text, but several kilobytes per row as a document in memory. Arrays and
// objects are opened and closed around members that are each serialized
// whole; commas are placed here. The output is the same JSON that
// serializing the whole document would give. One stream, one thread.

#include <iosfwd>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace copperwick::cli {

class JSONStream {
  public:
    explicit JSONStream(std::ostream& out) : m_out(out) {}
    // A finished stream ends its line, as printJSON does.
    ~JSONStream();
    JSONStream(const JSONStream&) = delete;
    JSONStream& operator=(const JSONStream&) = delete;

    // In an array, or at the top: opens a value. In an object: use key() first.
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    // The next member's name, inside an object.
    void key(std::string_view name);
    // One whole value: an array element, or the value of the last key().
    void value(const boost::json::value& value);
    // Every member of `members`, inside the open object.
    void members(const boost::json::object& members);

  private:
    void separate();

    std::ostream& m_out;
    std::vector<bool> m_hasMembers;  // one per open array or object
    bool m_afterKey = false;
};

}  // namespace copperwick::cli
