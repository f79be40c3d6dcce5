#include "common/session_bus.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <sys/socket.h>

#include "common/activation.h"
#include "common/application_object.h"
#include "common/event_codec.h"

namespace common {
namespace {

// Two ends of one connection without a bus between them.
class BusPair : public testing::Test {
  protected:
    void SetUp() override {
        int ends[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0);
        ASSERT_GE(sd_bus_new(&server_), 0);
        ASSERT_GE(sd_bus_set_fd(server_, ends[0], ends[0]), 0);
        ASSERT_GE(sd_bus_set_server(server_, 1, {}), 0);
        ASSERT_GE(sd_bus_set_anonymous(server_, 1), 0);
        ASSERT_GE(sd_bus_new(&client_), 0);
        ASSERT_GE(sd_bus_set_fd(client_, ends[1], ends[1]), 0);
        ASSERT_GE(sd_bus_set_anonymous(client_, 1), 0);
        ASSERT_GE(sd_bus_start(server_), 0);
        ASSERT_GE(sd_bus_start(client_), 0);
        while (sd_bus_is_ready(client_) == 0 || sd_bus_is_ready(server_) == 0)
            turn();
    }
    void TearDown() override {
        for (sd_bus_message *const message : {message_, reply_})
            sd_bus_message_unref(message);
        sd_bus_close_unref(client_);
        sd_bus_close_unref(server_);
        unsetenv("XDG_ACTIVATION_TOKEN");
        unsetenv("DESKTOP_STARTUP_ID");
    }
    // Lets both ends do what they have to do.
    void turn() {
        ASSERT_GE(sd_bus_process(client_, nullptr), 0);
        ASSERT_GE(sd_bus_process(server_, nullptr), 0);
    }
    // A new message of the client's, to be written.
    sd_bus_message *fresh() {
        sd_bus_message_unref(message_);
        message_ = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(client_, &message_, "a.b", "/x", "a.b", "X"), 0);
        return message_;
    }
    // The message as its reader gets it.
    sd_bus_message *sealed() {
        EXPECT_GE(sd_bus_message_seal(message_, 1, 0), 0);
        EXPECT_GE(sd_bus_message_rewind(message_, 1), 0);
        return message_;
    }
    // Sends the call from the client and waits for what comes back.
    sd_bus_message *answer_to(sd_bus_message *call) {
        sd_bus_message_unref(reply_);
        reply_ = nullptr;
        const auto keep = [](sd_bus_message *reply, void *place, sd_bus_error *) {
            *static_cast<sd_bus_message **>(place) = sd_bus_message_ref(reply);
            return 0;
        };
        EXPECT_GE(sd_bus_call_async(client_, nullptr, call, keep, &reply_, 0), 0);
        while (!reply_)
            turn();
        return reply_;
    }
    std::string property(const char *name) {
        sd_bus_message_unref(message_);
        message_ = nullptr;
        const char *value = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(client_, &message_, nullptr, application_path,
                                                 properties_interface, "Get"),
                  0);
        EXPECT_GE(sd_bus_message_append(message_, "ss", application_interface, name), 0);
        EXPECT_GE(sd_bus_message_read(answer_to(message_), "v", "s", &value), 0);
        return value ? value : "(null)";
    }

    sd_bus *server_ = nullptr, *client_ = nullptr;
    sd_bus_message *message_ = nullptr, *reply_ = nullptr;
};

using Activation = BusPair;
using ApplicationObjectTest = BusPair;
using EventCodecTest = BusPair;
using SessionBus = BusPair;

Parameter list_of(int depth) {
    Parameter list;
    list.keyword = "----";
    list.type = "list";
    list.kind = ValueKind::list;
    list.items = {depth > 1 ? list_of(depth - 1) : number_parameter("", 7)};
    list.items[0].keyword.clear();
    return list;
}

int depth_of(const Parameter &parameter) {
    return parameter.kind == ValueKind::list && !parameter.items.empty() ? 1 + depth_of(parameter.items[0])
                                                                         : 0;
}

} // namespace

TEST_F(Activation, TheTokenOfTheDesktopComesFirst) {
    setenv("XDG_ACTIVATION_TOKEN", "new", 1);
    setenv("DESKTOP_STARTUP_ID", "old", 1);
    ASSERT_GE(append_platform_data(fresh(), own_token()), 0);
    EXPECT_EQ(read_platform_data(sealed()), "new");
    unsetenv("XDG_ACTIVATION_TOKEN");
    ASSERT_GE(append_platform_data(fresh(), own_token()), 0);
    EXPECT_EQ(read_platform_data(sealed()), "old");
    unsetenv("DESKTOP_STARTUP_ID");
    ASSERT_GE(append_platform_data(fresh(), own_token()), 0);
    EXPECT_EQ(read_platform_data(sealed()), "");
}

TEST_F(Activation, TheTokenGoesUnderBothNames) {
    setenv("XDG_ACTIVATION_TOKEN", "t", 1);
    ASSERT_GE(append_platform_data(fresh(), own_token()), 0);
    const char *keys[2] = {}, *values[2] = {};
    ASSERT_GE(sd_bus_message_read(sealed(), "a{sv}", 2, &keys[0], "s", &values[0], &keys[1], "s", &values[1]),
              0);
    EXPECT_STREQ(keys[0], "activation-token");
    EXPECT_STREQ(keys[1], "desktop-startup-id");
    EXPECT_STREQ(values[1], "t");
}

TEST_F(Activation, AFreshTokenTakesThePlaceOfAnOldOne) {
    std::vector<std::string> variables = {"A=1", "XDG_ACTIVATION_TOKEN=old", "DESKTOP_STARTUP_ID=older",
                                          "B="};
    const std::vector<std::string> before = variables;
    put_token(variables, "");
    EXPECT_EQ(variables, before);
    put_token(variables, "new");
    EXPECT_EQ(variables,
              (std::vector<std::string>{"A=1", "B=", "XDG_ACTIVATION_TOKEN=new", "DESKTOP_STARTUP_ID=new"}));
}

TEST_F(Activation, ATokenThatIsForgottenIsHandedToNobody) {
    setenv("XDG_ACTIVATION_TOKEN", "new", 1);
    setenv("DESKTOP_STARTUP_ID", "old", 1);
    forget_own_token();
    EXPECT_EQ(own_token(), "");
    EXPECT_EQ(std::getenv("DESKTOP_STARTUP_ID"), nullptr);
}

TEST_F(Activation, OtherDataIsPassedOver) {
    ASSERT_GE(sd_bus_message_append(fresh(), "a{sv}", 3, "x", "i", 1, "activation-token", "s", "t",
                                    "desktop-startup-id", "s", "u"),
              0);
    EXPECT_EQ(read_platform_data(sealed()), "t");
    ASSERT_GE(sd_bus_message_append(fresh(), "a{sv}", 1, "activation-token", "i", 1), 0);
    EXPECT_EQ(read_platform_data(sealed()), "");
}

TEST_F(ApplicationObjectTest, SaysWhoItIs) {
    ApplicationObject object = {"ABCD", "name", "/path", {}};
    ASSERT_GE(serve_application(server_, &object), 0);
    EXPECT_EQ(property("Signature"), "ABCD");
    EXPECT_EQ(property("Name"), "name");
    EXPECT_EQ(property("Path"), "/path");
    object.path = "/\xFF";
    EXPECT_EQ(property("Path"), "");
}

TEST_F(ApplicationObjectTest, TakesEventsAndAnswersThem) {
    std::string seen;
    ApplicationObject object = {"ABCD", "name", "/path", [&](sd_bus_message *call, sd_bus_error *) {
                                    Event event;
                                    EXPECT_GE(read_event(call, event), 0);
                                    seen = event.event_class + event.id + event.parameters.at(0).bytes;
                                    EXPECT_GE(answer_event(call, -42, {text_parameter("mesg", "no")}), 0);
                                    return 1;
                                }};
    ASSERT_GE(serve_application(server_, &object), 0);
    const Event event = {"aevt", "odoc", {path_parameter("----", "/a")}};
    ASSERT_GE(new_event_call(client_, "a.b", event, &message_), 0);
    sd_bus_message *const reply = answer_to(message_);
    int error = 0;
    Parameters parameters;
    ASSERT_GE(sd_bus_message_read(reply, "i", &error), 0);
    ASSERT_GE(read_parameters(reply, parameters), 0);
    EXPECT_EQ(seen, "aevtodoc/a");
    EXPECT_EQ(error, -42);
    EXPECT_EQ(find_parameter(parameters, "mesg")->bytes, "no");
}

TEST_F(EventCodecTest, EveryKindOfValueComesBack) {
    Parameter bytes = text_parameter("byte", "a\xFF");
    Parameter nul = text_parameter("null", std::string_view("a\0b", 3));
    ASSERT_GE(append_parameters(fresh(), {bytes, nul, number_parameter("long", -5), list_of(2)}), 0);
    Parameters found;
    ASSERT_GE(read_parameters(sealed(), found), 0);
    ASSERT_EQ(found.size(), 4u);
    EXPECT_EQ(found[0].bytes, "a\xFF");
    EXPECT_EQ(found[0].type, "TEXT");
    EXPECT_EQ(found[1].bytes, std::string("a\0b", 3));
    EXPECT_EQ(found[2].number, -5);
    EXPECT_EQ(found[3].items[0].items[0].number, 7);
}

TEST_F(EventCodecTest, ListsNestEightDeep) {
    for (const int depth : {1, 8}) {
        Parameters found;
        ASSERT_GE(append_parameters(fresh(), {list_of(depth)}), 0);
        ASSERT_GE(read_parameters(sealed(), found), 0);
        EXPECT_EQ(depth_of(found[0]), depth);
    }
    Parameters found;
    ASSERT_GE(append_parameters(fresh(), {list_of(9), number_parameter("edit", 1)}), 0);
    ASSERT_GE(read_parameters(sealed(), found), 0);
    EXPECT_EQ(depth_of(found[0]), 8);
    EXPECT_EQ(found[1].number, 1);
}

TEST_F(EventCodecTest, AValueThatNoMemberHoldsIsPassedOver) {
    ASSERT_GE(sd_bus_message_append(fresh(), "a{s(sv)}", 2, "doub", "real", "d", 1.5, "edit", "long", "i", 1),
              0);
    Parameters found;
    ASSERT_GE(read_parameters(sealed(), found), 0);
    EXPECT_EQ(found[0].kind, ValueKind::other);
    EXPECT_EQ(found[1].number, 1);
}

TEST_F(SessionBus, ACallThatWantsNoAnswerGetsNone) {
    int seen = 0;
    ApplicationObject object = {"ABCD", "name", "/path", [&](sd_bus_message *call, sd_bus_error *) {
                                    seen = sd_bus_message_get_expect_reply(call) ? 2 : 1;
                                    EXPECT_EQ(answer_event(call, 0, {}), 0);
                                    std::uint64_t waiting = 0;
                                    EXPECT_GE(sd_bus_get_n_queued_write(server_, &waiting), 0);
                                    EXPECT_EQ(waiting, 0u);
                                    return 1;
                                }};
    ASSERT_GE(serve_application(server_, &object), 0);
    sd_bus_message *call = nullptr;
    const int made = new_event_call(client_, "a.b", {"aevt", "quit", {}}, &call);
    ASSERT_GE(send_without_reply(client_, call, made), 0);
    while (!seen)
        turn();
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(send_without_reply(client_, nullptr, -ENOMEM), -ENOMEM);
}

TEST(BusNames, AreThePrefixAndAProcessId) {
    pid_t process = 0;
    EXPECT_EQ(application_bus_name(12), "org.quillon.App.p12");
    EXPECT_TRUE(process_of_bus_name("org.quillon.App.p12", &process));
    EXPECT_EQ(process, 12);
    for (const char *const other : {"org.quillon.App.p0", "org.quillon.App.p-1", "org.quillon.App.p12x",
                                    "org.quillon.App.p", "org.quillon.Shell", ":1.12"})
        EXPECT_FALSE(process_of_bus_name(other, &process)) << other;
}

} // namespace common
