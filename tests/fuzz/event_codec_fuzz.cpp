// Parameters on the bus: what is read is what was put in, whatever its types and nesting; what is read and
// written again is the same; and so it is on the way through an event of the shell's own.
#include "common/event_codec.h"

#include <cstring>
#include <endian.h>
#include <sys/socket.h>

#include "common/utf8.h"
#include "fuzz/fuzz.h"
#include "linux/events/ae_codec.h"
#include "linux/events/ae_data.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"\x03",         "\x02\x02\x03",     "\x01\x04\xFF\xFE-A",
                                             "\x03\x03\x03", "\x05text with",    "\x04\x01\x02\x03",
                                             "\x07\x06\x05", "\x02\x7F\xFF\xFF", std::string(2, '\0'),
                                             "\x05\xC3\xA9", std::string(9, 3),  "\x08\x09\x0A\x0B"};
const int fuzz_runs = 1500;

namespace {

using namespace common;

constexpr int deepest_list = 8; // what event_codec.cpp promises to read
const std::string keywords[] = {"----", "dest", "edit", "", "long keyword", "\xC3\xA9\xC3\xA9", "abc"};
const std::string types[] = {"TEXT", "long", "list", "fss ", "type", "", "five5", "\xC3\xA9\xC3\xA9"};

// A bus that leads nowhere: messages are made for it, and it sends none.
sd_bus *idle_bus() {
    static sd_bus *bus = nullptr;
    int ends[2];
    if (bus)
        return bus;
    require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0 && sd_bus_new(&bus) >= 0 &&
                sd_bus_set_fd(bus, ends[0], ends[0]) >= 0 && sd_bus_start(bus) >= 0,
            "there is no bus");
    return bus;
}

// A call without contents; the caller releases it.
sd_bus_message *new_call() {
    sd_bus_message *call = nullptr;
    require(sd_bus_message_new_method_call(idle_bus(), &call, "org.x.Y", "/x", "org.x.Y", "Z") >= 0,
            "there is no message");
    return call;
}

void seal(sd_bus_message *message) {
    require(sd_bus_message_seal(message, 1, 0) >= 0, "the message cannot be sealed");
    require(sd_bus_message_rewind(message, 1) >= 0, "the message cannot be read");
}

bool good(int result) {
    require(result >= 0, "the message cannot be filled");
    return true;
}

// Appends a value that is none of those that parameters have.
void append_foreign(sd_bus_message *message, Choices &choices) {
    switch (choices.below(8)) {
    case 0:
        good(sd_bus_message_append(message, "v", "u", 7u));
        break;
    case 1:
        good(sd_bus_message_append(message, "v", "as", 2, "a", "b"));
        break;
    case 2:
        good(sd_bus_message_append(message, "v", "a{sv}", 1, "k", "s", "v"));
        break;
    case 3:
        good(sd_bus_message_append(message, "v", "(ii)", 1, 2));
        break;
    case 4:
        good(sd_bus_message_append(message, "v", "v", "s", "inside"));
        break;
    case 5:
        good(sd_bus_message_append(message, "v", "d", 0.5));
        break;
    case 6:
        good(sd_bus_message_append(message, "v", "o", "/path"));
        break;
    default:
        good(sd_bus_message_append(message, "v", "b", 1));
    }
}

Parameter append_random(sd_bus_message *message, Choices &choices, int depth);

// Appends a list in the form in which it travels. Returns what is read of it.
std::vector<Parameter> append_list(sd_bus_message *message, Choices &choices, int depth) {
    std::vector<Parameter> items;
    good(sd_bus_message_open_container(message, 'v', "a(sv)"));
    good(sd_bus_message_open_container(message, 'a', "(sv)"));
    for (std::size_t count = choices.below(4); count > 0; count--)
        items.push_back(append_random(message, choices, depth + 1));
    good(sd_bus_message_close_container(message));
    good(sd_bus_message_close_container(message));
    return items;
}

// Appends one "(sv)". Returns the parameter that is to be read of it.
Parameter append_random(sd_bus_message *message, Choices &choices, int depth) {
    Parameter expected;
    expected.type = choices.of(types);
    good(sd_bus_message_open_container(message, 'r', "sv"));
    good(sd_bus_message_append(message, "s", expected.type.c_str()));
    const std::size_t kind = choices.below(6);
    if (kind == 0) {
        expected.kind = ValueKind::number;
        expected.number = static_cast<std::int32_t>(choices.below(std::size_t{1} << 32));
        good(sd_bus_message_append(message, "v", "i", expected.number));
    } else if (kind == 1) {
        expected.kind = ValueKind::bytes;
        expected.bytes = choices.bytes(9);
        good(sd_bus_message_open_container(message, 'v', "ay"));
        good(sd_bus_message_append_array(message, 'y', expected.bytes.data(), expected.bytes.size()));
        good(sd_bus_message_close_container(message));
    } else if (kind == 2) {
        expected.kind = ValueKind::bytes;
        expected.bytes = choices.of(keywords);
        good(sd_bus_message_append(message, "v", "s", expected.bytes.c_str()));
    } else if (kind <= 4 && depth < 12) {
        std::vector<Parameter> items = append_list(message, choices, depth);
        if (depth < deepest_list) {
            expected.kind = ValueKind::list;
            expected.items = std::move(items);
        }
    } else {
        append_foreign(message, choices);
    }
    good(sd_bus_message_close_container(message));
    return expected;
}

bool same(const Parameter &a, const Parameter &b) {
    return a.keyword == b.keyword && a.type == b.type && a.kind == b.kind && a.bytes == b.bytes &&
           a.number == b.number &&
           std::equal(a.items.begin(), a.items.end(), b.items.begin(), b.items.end(), same);
}

bool all_same(const Parameters &a, const Parameters &b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
}

// A value that no member holds is written as an empty text.
void fill_foreign(Parameters &parameters) {
    for (Parameter &parameter : parameters) {
        if (parameter.kind == ValueKind::other)
            parameter.kind = ValueKind::bytes;
        fill_foreign(parameter.items);
    }
}

// Returns PARAMETERS after the way through a message.
Parameters through_message(const Parameters &parameters) {
    Event event = {"QUIL", "exec", parameters}, read;
    sd_bus_message *call = nullptr;
    good(new_event_call(idle_bus(), "org.quillon.X", event, &call));
    seal(call);
    good(read_event(call, read));
    require(read.event_class == event.event_class && read.id == event.id, "the event is another");
    require(sd_bus_message_at_end(call, 1) > 0, "something is left in the message");
    sd_bus_message_unref(call);
    return read.parameters;
}

// True when the parameter fits an event of the shell's, by the slow way.
bool fits(const Parameter &parameter) {
    const ValueKind kind = parameter.type == "long"   ? ValueKind::number
                           : parameter.type == "list" ? ValueKind::list
                                                      : ValueKind::bytes;
    return parameter.type.size() == 4 && parameter.kind == kind &&
           std::all_of(parameter.items.begin(), parameter.items.end(), fits);
}

bool holds_location(const Parameters &parameters) {
    return std::any_of(parameters.begin(), parameters.end(), [](const Parameter &parameter) {
        return parameter.type == "fss " || holds_location(parameter.items);
    });
}

void check_event(const Parameters &parameters) {
    AppleEvent event;
    ae_make_record(&event, four("QUIL"), four("exec"));
    const bool taken = take_parameters(parameters, &event) != 0;
    const bool fit = std::all_of(parameters.begin(), parameters.end(), [](const Parameter &parameter) {
        return parameter.keyword.size() == 4 && fits(parameter);
    });
    // Whether there can be such a location the disk decides.
    require(taken == fit || (!taken && holds_location(parameters)),
            "parameters are taken or refused wrongly");
    if (taken && !holds_location(parameters))
        require(all_same(parameters_of(event), parameters), "an event has other parameters");
    AEDisposeDesc(&event);
}

// A path that is there comes back out of an event; one with a zero byte is refused.
void check_location(const std::string &bytes) {
    AppleEvent event;
    ae_make_record(&event, four("QUIL"), four("exec"));
    require(take_parameters({path_parameter("dest", "/usr/bin")}, &event) != 0, "a path is refused");
    const Parameters read = parameters_of(event);
    require(read.size() == 1 && read[0].bytes == "/usr/bin", "a path has changed");
    const std::string zero = "/usr" + std::string(1, '\0') + bytes;
    require(take_parameters({path_parameter("dest", zero)}, &event) == 0, "a path with a zero byte is taken");
    AEDisposeDesc(&event);
}

// A message whose contents begin with something else is refused, and nothing of it is read past its end.
void check_wrong_type(Choices &choices) {
    sd_bus_message *call = new_call();
    append_foreign(call, choices);
    seal(call);
    Event event;
    Parameters parameters;
    require(read_event(call, event) < 0, "a message of another type is an event");
    sd_bus_message_rewind(call, 1);
    require(read_parameters(call, parameters) <= 0 && parameters.empty(),
            "a message of another type has parameters");
    sd_bus_message_unref(call);
}

// Parameters of any bytes, made here, come through a message as they are.
void check_made(const std::string &bytes) {
    Parameter list;
    list.keyword = "list";
    list.type = "list";
    list.kind = ValueKind::list;
    list.items = {text_parameter("", bytes), number_parameter("", static_cast<std::int32_t>(bytes.size()))};
    const Parameters made = {text_parameter("----", bytes), path_parameter("dest", bytes), list};
    require(all_same(through_message(made), made), "parameters have changed on their way");
    require(find_parameter(made, "dest") == &made[1] && !find_parameter(made, "none"),
            "another parameter is found");
}

} // namespace

void fuzz_one(const std::string &input) {
    Choices choices(input);
    Parameters expected, read;
    sd_bus_message *call = new_call();
    good(sd_bus_message_open_container(call, 'a', "{s(sv)}"));
    while (!choices.ended() && expected.size() < 3) {
        const std::string keyword = choices.of(keywords);
        good(sd_bus_message_open_container(call, 'e', "s(sv)"));
        good(sd_bus_message_append(call, "s", keyword.c_str()));
        expected.push_back(append_random(call, choices, 0));
        expected.back().keyword = keyword;
        good(sd_bus_message_close_container(call));
    }
    good(sd_bus_message_close_container(call));
    seal(call);
    good(read_parameters(call, read));
    require(sd_bus_message_at_end(call, 1) > 0, "something is left in the message");
    sd_bus_message_unref(call);
    require(all_same(read, expected), "other parameters are read");
    check_event(read);
    const Parameters again = through_message(read);
    fill_foreign(read);
    require(all_same(again, read), "what was read is written otherwise");
    if (input.size() % 4 == 0)
        check_made(input);
    if (input.size() % 8 == 0) {
        Choices others(input);
        check_wrong_type(others);
        check_location(others.bytes(20));
    }
    std::uint32_t code = 0;
    std::memcpy(&code, input.data(), std::min(input.size(), sizeof code));
    require(code_number(input) == static_cast<std::int32_t>(be32toh(code)), "a code is another number");
}

} // namespace quillon::test
