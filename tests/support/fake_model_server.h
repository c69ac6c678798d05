#pragma once

// An OpenAI-compatible model server on a loopback port, replaying whatever
// the test tells it to: structured answers, a conversation with tool calls,
// garbage, refusals, or no answer at all. It keeps every request it got, so
// a test can read what the model was shown, and whether anything arrived.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <httplib.h>
#include <boost/json.hpp>

namespace copperwick::testing {

class FakeModelServer {
  public:
    struct Reply {
        int status = 200;
        std::string body;
        std::string contentType = "application/json";
        // Never answers: the handler waits until the server goes.
        bool hang = false;
        // Answers, but only after this long.
        std::chrono::milliseconds delay{0};
        // Sent as a Location header, with a 3xx status.
        std::string location;
    };
    using Responder = std::function<Reply(const boost::json::object& request)>;

    // On 127.0.0.1 unless told another loopback address.
    explicit FakeModelServer(const std::string& host = "127.0.0.1") {
        m_server.Get("/v1/models", [this](const httplib::Request&, httplib::Response& response) {
            count("/v1/models", {});
            const auto models = responder(m_models);
            serve(models ? models({}) : Reply{.body = kModels}, response);
        });
        m_server.Post("/v1/chat/completions",
                      [this](const httplib::Request& request, httplib::Response& response) {
                          boost::json::object body;
                          std::error_code error;
                          auto parsed = boost::json::parse(request.body, error);
                          if (!error && parsed.is_object())
                              body = parsed.as_object();
                          count("/v1/chat/completions", body);
                          const auto chat = responder(m_chat);
                          serve(chat ? chat(body) : Reply{.status = 500}, response);
                      });
        // Anything else is counted too: a proxy or a redirect's target
        // must see nothing at all.
        const auto other = [this](const httplib::Request& request, httplib::Response& response) {
            count(request.path, {});
            response.status = 404;
        };
        m_server.Get(".*", other);
        m_server.Post(".*", other);
        m_port = m_server.bind_to_any_port(host);
        // Bound and listening already: connections wait for the loop to take
        // them. A stop before the loop runs would be missed, so wait for it.
        m_thread = std::thread([this] { m_server.listen_after_bind(); });
        while (!m_server.is_running())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ~FakeModelServer() {
        {
            std::lock_guard lock(m_mutex);
            m_closing = true;
        }
        m_released.notify_all();
        m_server.stop();
        m_thread.join();
    }
    FakeModelServer(const FakeModelServer&) = delete;
    FakeModelServer& operator=(const FakeModelServer&) = delete;

    [[nodiscard]] int port() const { return m_port; }
    [[nodiscard]] std::string endpoint() const {
        return "http://127.0.0.1:" + std::to_string(m_port) + "/v1";
    }

    void onChat(Responder responder) {
        std::lock_guard lock(m_mutex);
        m_chat = std::move(responder);
    }
    void onModels(Responder responder) {
        std::lock_guard lock(m_mutex);
        m_models = std::move(responder);
    }

    // The chat requests so far, in order.
    [[nodiscard]] std::vector<boost::json::object> chats() const {
        std::lock_guard lock(m_mutex);
        return m_chats;
    }
    // Every request of any kind.
    [[nodiscard]] int requestCount() const {
        std::lock_guard lock(m_mutex);
        return static_cast<int>(m_paths.size());
    }

    // A chat completion whose message is `message`.
    [[nodiscard]] static Reply completion(boost::json::object message) {
        message.emplace("role", "assistant");
        return {
            .body = boost::json::serialize(boost::json::object{
                {"id", "chatcmpl-fake"},
                {"object", "chat.completion"},
                {"choices", boost::json::array{boost::json::object{
                                {"index", 0}, {"message", message}, {"finish_reason", "stop"}}}}})};
    }
    // The structured answer `content`, as the model writes it: JSON text.
    [[nodiscard]] static Reply structured(const boost::json::object& content) {
        return completion({{"content", boost::json::serialize(content)}});
    }
    [[nodiscard]] static Reply text(const std::string& content) {
        return completion({{"content", content}});
    }
    // The model asks for one lookup with these arguments.
    [[nodiscard]] static Reply toolCall(const std::string& name,
                                        const boost::json::object& arguments,
                                        const std::string& id = "call-1") {
        return completion(
            {{"content", nullptr},
             {"tool_calls",
              boost::json::array{boost::json::object{
                  {"id", id},
                  {"type", "function"},
                  {"function",
                   boost::json::object{{"name", name},
                                       {"arguments", boost::json::serialize(arguments)}}}}}}});
    }

    // The text of the system and user messages of a chat request.
    [[nodiscard]] static std::string said(const boost::json::object& request,
                                          const std::string& role) {
        std::string text;
        for (const auto& message : request.at("messages").as_array()) {
            if (message.at("role").as_string() == role)
                text += std::string(message.at("content").as_string());
        }
        return text;
    }

  private:
    static constexpr const char* kModels =
        R"({"object":"list","data":[{"id":"fake-model","object":"model"}]})";

    Responder responder(const Responder& which) const {
        std::lock_guard lock(m_mutex);
        return which;
    }

    void count(const std::string& path, boost::json::object body) {
        std::lock_guard lock(m_mutex);
        m_paths.push_back(path);
        if (path == "/v1/chat/completions")
            m_chats.push_back(std::move(body));
    }

    void serve(const Reply& reply, httplib::Response& response) {
        if (reply.hang) {
            std::unique_lock lock(m_mutex);
            m_released.wait_for(lock, std::chrono::seconds(30), [this] { return m_closing; });
            response.status = 500;
            return;
        }
        if (reply.delay.count() > 0) {
            std::unique_lock lock(m_mutex);
            m_released.wait_for(lock, reply.delay, [this] { return m_closing; });
        }
        response.status = reply.status;
        if (!reply.location.empty())
            response.set_header("Location", reply.location);
        response.set_content(reply.body, reply.contentType.c_str());
    }

    httplib::Server m_server;
    std::thread m_thread;
    int m_port = 0;
    Responder m_chat;
    Responder m_models;
    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    bool m_closing = false;
    std::vector<std::string> m_paths;
    std::vector<boost::json::object> m_chats;
};

}  // namespace copperwick::testing
