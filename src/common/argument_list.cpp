#include "common/argument_list.h"

namespace common {

std::vector<char *> argument_list(std::vector<std::string> &words) {
    std::vector<char *> list;
    list.reserve(words.size() + 1);
    for (std::string &word : words)
        list.push_back(word.data());
    list.push_back(nullptr);
    return list;
}

} // namespace common
