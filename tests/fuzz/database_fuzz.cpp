// The lines of a file database: the list is what the line reader and the cutting of the last character make
// of them, and every name of it can be looked up.
#include <cstring>

#include "files/search.h"
#include "files/streams.h"
#include "fuzz/fuzz.h"
#include "support/temporary_home.h"

namespace quillon::test {

const std::vector<std::string> fuzz_words = {"/Vol/fonts/\n",
                                             "cmr10.tfm\n",
                                             "0\n",
                                             "\n",
                                             "\r",
                                             "\r\n",
                                             "/",
                                             "name",
                                             std::string(1, '\0'),
                                             "0",
                                             "/a/\r",
                                             std::string(1021, 'x'),
                                             std::string(1022, 'y'),
                                             std::string(1023, 'z'),
                                             std::string(2100, '/')};
const int fuzz_runs = 1000;

namespace {

using List = std::vector<std::string>;

List expected_list(const std::string &path) {
    List expected;
    std::string folder;
    char line[1024];
    std::FILE *const file = std::fopen(path.c_str(), "r");
    while (mfgets(line, sizeof line, file)) {
        if (const std::size_t length = std::strlen(line))
            line[length - 1] = '\0';
        if (line[0] == '/')
            folder = line;
        else if (line[0] != '0')
            expected.push_back(folder + "|" + line);
    }
    std::fclose(file);
    return expected;
}

} // namespace

void fuzz_one(const std::string &input) {
    static const TemporaryHome home;
    static const std::string path = home.folder("data/Quillon") + "/TEXFONTS";
    supportFolder.copy(home.path("data/Quillon"));
    haveosx = 1;
    dataBaseSearch = 1;
    std::ofstream(path, std::ios::binary) << input;
    read_hash_table("TEXFONTS", &tfmTable);
    require(dataBaseSearch == 1, "the database was not read");
    List found;
    for (const HashNode *node = tfmTable.nodes; node && node->next; node = &tfmTable.nodes[node->next]) {
        const std::string name = name_of(&tfmTable, node);
        found.push_back(directory_of(&tfmTable, node) + std::string("|") + name);
        if (found.size() < 8)
            std::free(searchDatabase(5, name.c_str()));
    }
    require(found == expected_list(path), "the list is not that of the lines");
}

} // namespace quillon::test
