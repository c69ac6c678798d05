#pragma once

// What tests of updates share: a feed and its packages served over plain
// http on a loopback port, a signing key made with libsodium itself (not
// with the code under test), the feed's XML for a few items, and an alarm
// clock wound by hand.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <httplib.h>
#include <sodium.h>

#include "runtime/updates/alarm_clock.h"
#include "runtime/updates/updater.h"

namespace copperwick::testing {

class UpdateFeedServer {
  public:
    UpdateFeedServer() {
        m_server.Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
            std::unique_lock lock(m_mutex);
            m_requests.push_back(request.path);
            if (request.path == "/appcast.xml" && m_hangFeed) {
                m_released.wait_for(lock, std::chrono::seconds(30), [this] { return m_closing; });
                response.status = 500;
                return;
            }
            const auto found = m_files.find(request.path);
            if (found == m_files.end()) {
                response.status = 404;
                return;
            }
            response.status = 200;
            response.set_content(found->second, "application/octet-stream");
        });
        m_port = m_server.bind_to_any_port("127.0.0.1");
        m_thread = std::thread([this] { m_server.listen_after_bind(); });
        while (!m_server.is_running())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ~UpdateFeedServer() {
        {
            std::lock_guard lock(m_mutex);
            m_closing = true;
        }
        m_released.notify_all();
        m_server.stop();
        m_thread.join();
    }
    UpdateFeedServer(const UpdateFeedServer&) = delete;
    UpdateFeedServer& operator=(const UpdateFeedServer&) = delete;

    [[nodiscard]] std::string url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(m_port) + path;
    }
    [[nodiscard]] std::string feedURL() const { return url("/appcast.xml"); }

    void serve(const std::string& path, std::string body) {
        std::lock_guard lock(m_mutex);
        m_files[path] = std::move(body);
    }
    void serveFeed(std::string xml) { serve("/appcast.xml", std::move(xml)); }
    // The feed never answers, until the server goes: requests made while
    // this is on hang for good.
    void hangFeed(bool on = true) {
        std::lock_guard lock(m_mutex);
        m_hangFeed = on;
    }
    [[nodiscard]] std::vector<std::string> requests() const {
        std::lock_guard lock(m_mutex);
        return m_requests;
    }
    [[nodiscard]] int requestsFor(const std::string& path) const {
        std::lock_guard lock(m_mutex);
        return static_cast<int>(std::count(m_requests.begin(), m_requests.end(), path));
    }

  private:
    httplib::Server m_server;
    std::thread m_thread;
    int m_port = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    bool m_closing = false;
    bool m_hangFeed = false;
    std::map<std::string, std::string> m_files;
    std::vector<std::string> m_requests;
};

// An ed25519 key pair straight from libsodium.
class TestSigningKey {
  public:
    TestSigningKey() {
        if (sodium_init() < 0)
            throw std::runtime_error("libsodium couldn't start");
        crypto_sign_keypair(m_public, m_secret);
    }

    [[nodiscard]] std::string publicKey() const { return base64(m_public, sizeof m_public); }
    [[nodiscard]] std::string sign(const std::string& bytes) const {
        unsigned char signature[crypto_sign_BYTES];
        crypto_sign_detached(signature, nullptr,
                             reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                             m_secret);
        return base64(signature, sizeof signature);
    }

  private:
    static std::string base64(const unsigned char* bytes, std::size_t size) {
        std::string text(sodium_base64_ENCODED_LEN(size, sodium_base64_VARIANT_ORIGINAL), '\0');
        sodium_bin2base64(text.data(), text.size(), bytes, size, sodium_base64_VARIANT_ORIGINAL);
        text.pop_back();
        return text;
    }

    unsigned char m_public[crypto_sign_PUBLICKEYBYTES];
    unsigned char m_secret[crypto_sign_SECRETKEYBYTES];
};

// A build of version 1.0.0 that checks `server`'s feed for packages signed
// by `key`, with time limits short enough for a test.
inline UpdateConfiguration configurationFor(const UpdateFeedServer& server,
                                            const TestSigningKey& key) {
    using namespace std::chrono_literals;
    return UpdateConfiguration{.feed = server.feedURL(),
                               .publicKey = key.publicKey(),
                               .runningVersion = "1.0.0",
                               .connectLimit = 2s,
                               .feedTimeLimit = 2s,
                               .downloadTimeLimit = 10s};
}

// One <item> of a feed.
struct FeedItem {
    std::string version;
    std::string url;
    std::size_t length = 0;
    std::string signature;
    std::string type = "application/vnd.debian.binary-package";
    std::string shortVersion;
};

inline std::string feedXML(const std::vector<FeedItem>& items) {
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<rss version=\"2.0\" "
        "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\">\n"
        "<channel><title>Copperwick</title>\n";
    for (const FeedItem& item : items) {
        xml += "<item><title>Copperwick " + item.version +
               "</title><description>Fixes.</description>\n<enclosure url=\"" + item.url +
               "\" length=\"" + std::to_string(item.length) + "\" type=\"" + item.type +
               "\" sparkle:version=\"" + item.version + "\"";
        if (!item.shortVersion.empty())
            xml += " sparkle:shortVersionString=\"" + item.shortVersion + "\"";
        xml += " sparkle:edSignature=\"" + item.signature + "\"/></item>\n";
    }
    return xml + "</channel></rss>\n";
}

// Alarms that ring only when the test winds the clock past them, in the
// order they are due.
class ManualAlarmClock final : public AlarmClock {
  public:
    std::unique_ptr<Alarm> set(std::chrono::milliseconds delay,
                               std::function<void()> ring) override {
        auto live = std::make_shared<bool>(true);
        m_alarms.push_back({m_now + delay, m_order++, std::move(ring), live});
        return std::make_unique<Set>(live);
    }

    // Rings every alarm due within `step`, one by one, as the time passes.
    void advance(std::chrono::milliseconds step) {
        const auto until = m_now + step;
        while (true) {
            std::erase_if(m_alarms, [](const Entry& entry) { return !*entry.live; });
            auto next = std::min_element(
                m_alarms.begin(), m_alarms.end(), [](const Entry& a, const Entry& b) {
                    return a.due != b.due ? a.due < b.due : a.order < b.order;
                });
            if (next == m_alarms.end() || next->due > until)
                break;
            Entry due = std::move(*next);
            m_alarms.erase(next);
            m_now = due.due;
            if (*due.live)
                due.ring();
        }
        m_now = until;
    }
    // Alarms set and not yet rung or dropped.
    [[nodiscard]] std::size_t waiting() {
        std::erase_if(m_alarms, [](const Entry& entry) { return !*entry.live; });
        return m_alarms.size();
    }

  private:
    struct Entry {
        std::chrono::milliseconds due;
        uint64_t order;
        std::function<void()> ring;
        std::shared_ptr<bool> live;
    };
    class Set final : public Alarm {
      public:
        explicit Set(std::shared_ptr<bool> live) : m_live(std::move(live)) {}
        ~Set() override { *m_live = false; }

      private:
        std::shared_ptr<bool> m_live;
    };

    std::chrono::milliseconds m_now{0};
    uint64_t m_order = 0;
    std::vector<Entry> m_alarms;
};

}  // namespace copperwick::testing
