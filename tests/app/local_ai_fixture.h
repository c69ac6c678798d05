#pragma once

// A workspace whose preferences point Local AI at a fake model server on
// this computer, for screen tests that drive what the model does. The
// server answers as each test tells it; without useServer() no model is
// set up at all, as on a machine where nobody started one.

#include <string>

#include <boost/json.hpp>

#include "runtime/preferences.h"
#include "tests/app/app_fixture.h"
#include "tests/support/fake_model_server.h"
#include "tests/support/model_test_support.h"

namespace copperwick::testing {

class LocalAIWorkspace : public AppWorkspace {
  public:
    // The screens go while the server still answers.
    ~LocalAIWorkspace() override { close(); }

    void useServer() {
        runtime->defaults().set(preference_keys::aiEndpoint, server.endpoint());
        runtime->defaults().set(preference_keys::aiModel, "fake-model");
    }

    // The last message of a chat request: the question, or a lookup's result.
    static const boost::json::object& lastMessage(const boost::json::object& request) {
        return request.at("messages").as_array().back().as_object();
    }

    FakeModelServer server;
};

}  // namespace copperwick::testing
