#include "common/application.h"

#include "common/host_files.h"
#include "common/path_forms.h"

namespace common {

Application application_at(const std::string &path) {
    Application application;
    application.path = path;
    while (application.path.size() > 1 && application.path.ends_with('/'))
        application.path.pop_back();
    const std::string &place = application.path;
    // A link to an entry may have any name.
    const std::string file = place.ends_with(".desktop") ? place : canonical_path(place);
    if (file.ends_with(".desktop") && read_desktop_entry(file, application.entry))
        application.kind = Kind::entry;
    else if (is_folder(place))
        application.kind = is_folder(place + "/Contents/Linux") ? Kind::bundle : Kind::none;
    else if (can_run(place))
        application.kind = Kind::program;
    return application;
}

} // namespace common
