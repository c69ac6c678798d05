#include "cli/json_stream.h"

#include <ostream>

#include <boost/json/serialize.hpp>

namespace copperwick::cli {

JSONStream::~JSONStream() {
    m_out << '\n';
}

void JSONStream::separate() {
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (m_hasMembers.empty())
        return;
    if (m_hasMembers.back())
        m_out << ',';
    m_hasMembers.back() = true;
}

void JSONStream::beginObject() {
    separate();
    m_out << '{';
    m_hasMembers.push_back(false);
}

void JSONStream::endObject() {
    m_out << '}';
    m_hasMembers.pop_back();
}

void JSONStream::beginArray() {
    separate();
    m_out << '[';
    m_hasMembers.push_back(false);
}

void JSONStream::endArray() {
    m_out << ']';
    m_hasMembers.pop_back();
}

void JSONStream::key(std::string_view name) {
    separate();
    m_out << boost::json::serialize(boost::json::string_view(name.data(), name.size())) << ':';
    m_afterKey = true;
}

void JSONStream::value(const boost::json::value& value) {
    separate();
    m_out << boost::json::serialize(value);
}

void JSONStream::members(const boost::json::object& members) {
    for (const auto& member : members) {
        key(member.key());
        value(member.value());
    }
}

}  // namespace copperwick::cli
