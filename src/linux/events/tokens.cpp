#include "linux/events/tokens.h"

#include <string_view>

#include "common/path_forms.h"
#include "front/front.h"
#include "toolbox/bounded.h"
#include "toolbox/processes.h"

namespace quillon {

static constexpr std::size_t longest_token = 1024;

std::string fresh_token(const std::string &application) {
    BoundedString<longest_token> token;
    if (open_hints.after_run || !front || !front->activation_token)
        return {};
    // The desktop knows an application by the name of its entry.
    constexpr std::string_view ending = ".desktop";
    std::string id;
    if (application.ends_with(ending)) {
        id = common::leaf_of(application);
        id.resize(id.size() - ending.size());
    }
    front->activation_token(id.empty() ? nullptr : id.c_str(), token);
    return token.c_str();
}

} // namespace quillon
