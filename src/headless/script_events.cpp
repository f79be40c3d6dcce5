#include "headless/script_events.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "headless/script_words.h"
#include "toolbox/apple_events.h"
#include "toolbox/codes.h"
#include "toolbox/files.h"
#include "toolbox/received_events.h"

namespace quillon {

// Reads a code of up to four characters, which is filled up with blanks: 1, or 0 for any other text.
static int parse_short_code(const std::string &text, OSType *code) {
    return !text.empty() && text.size() <= 4 && parse_code(text + std::string(4 - text.size(), ' '), code);
}

static int is_type(const std::string &word) {
    return word == "TEXT" || word == "long" || word == "fss" || word == "fss " || word == "list";
}

static int make_location(const std::string &path, FSSpec *spec) {
    const OSErr error = FSPathMakeSpec(path.c_str(), spec);
    if (error == noErr || error == fnfErr)
        return 1;
    std::fprintf(stderr, "quillon: script: %s cannot be a location\n", path.c_str());
    return 0;
}

static void put_list(AppleEvent *event, OSType keyword, const std::vector<std::string> &paths) {
    AEDescList list;
    AECreateList(&list);
    for (const std::string &path : paths) {
        FSSpec spec;
        AEDesc item;
        if (!make_location(path, &spec))
            continue;
        AECreateDesc(typeFSS, &spec, sizeof spec, &item);
        AEPutDesc(&list, 0, &item);
        AEDisposeDesc(&item);
    }
    AEPutParamDesc(event, keyword, &list);
    AEDisposeDesc(&list);
}

static std::string joined(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

static void put_parameter(AppleEvent *event, OSType keyword, const std::string &type,
                          const std::vector<std::string> &values) {
    const std::string value = joined(values);
    if (type == "list") {
        put_list(event, keyword, values);
    } else if (type == "long") {
        const auto number = static_cast<std::int32_t>(std::strtol(value.c_str(), nullptr, 10));
        AEPutParamPtr(event, keyword, typeLongInteger, &number, sizeof number);
    } else if (type == "TEXT") {
        AEPutParamPtr(event, keyword, typeChar, value.data(), value.size());
    } else {
        FSSpec spec;
        if (make_location(value, &spec))
            AEPutParamPtr(event, keyword, typeFSS, &spec, sizeof spec);
    }
}

static void print_value(OSType keyword, OSType type, const void *data, std::size_t size, void *) {
    std::string name = code_text(type);
    name.erase(name.find_last_not_of(' ') + 1);
    std::printf(" %s %s ", code_text(keyword).c_str(), name.c_str());
    if (type == typeLongInteger)
        std::printf("%d", *static_cast<const std::int32_t *>(data));
    else
        std::fwrite(data, 1, size, stdout);
}

static void print_reply(OSErr result, const AppleEvent *reply) {
    std::printf("reply %d", result);
    WalkParameters(reply, print_value, nullptr);
    std::putchar('\n');
    std::fflush(stdout);
}

void PostScriptEvent(const std::string &line) {
    const std::vector<std::string> words = SplitWords(line);
    OSType event_class = 0, event_id = 0;
    if (words.size() < 2 || !parse_short_code(words[0], &event_class) ||
        !parse_short_code(words[1], &event_id)) {
        std::fprintf(stderr, "quillon: script: event takes a class and an id: %s\n", line.c_str());
        return;
    }
    AppleEvent event;
    MakeReceivedEvent(event_class, event_id, &event);
    std::size_t i = 2;
    while (i + 1 < words.size()) {
        OSType keyword = 0;
        if (!parse_short_code(words[i], &keyword) || !is_type(words[i + 1])) {
            std::fprintf(stderr, "quillon: script: a parameter is KEYWORD TYPE VALUE: %s\n",
                         words[i].c_str());
            break;
        }
        const std::string &type = words[i + 1];
        std::vector<std::string> values;
        for (i += 2; i < words.size(); i++) {
            if (i + 1 < words.size() && words[i].size() == 4 && is_type(words[i + 1]) && !values.empty())
                break;
            values.push_back(words[i]);
        }
        put_parameter(&event, keyword, type, values);
    }
    QueueReceivedEvent(&event, print_reply);
}

} // namespace quillon
