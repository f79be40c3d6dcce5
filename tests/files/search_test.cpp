#include "files/search.h"

#include <fcntl.h>

#include <cstring>

#include "files/paths.h"
#include "files/signatures.h"
#include "files/streams.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

using namespace quillon;
using namespace quillon::test;

namespace {

class Search : public testing::Test {
  protected:
    TemporaryHome home_;
    RecordingFront front_;

    Search() {
        supportFolder.copy(home_.path("data/Quillon"));
        dataBaseSearch = 1;
        std::filesystem::create_directory(home_.path("data/Quillon"));
    }
    ~Search() override {
        supportFolder.copy("/tmp/none");
        for (HashList *const list : {&texinputsTable, &tfmTable})
            read_hash_table("none", list);
    }

    void database(const char *name, const std::string &contents) {
        home_.file(std::string("data/Quillon/") + name, contents);
    }
    static std::vector<std::string> entries(const HashList &list) {
        std::vector<std::string> found;
        for (const HashNode *node = list.nodes; node && node->next; node = &list.nodes[node->next])
            found.push_back(directory_of(&list, node) + std::string("|") + name_of(&list, node));
        return found;
    }
    std::vector<std::string> lines(const std::string &bytes, int size = 100) {
        std::vector<std::string> found;
        std::vector<char> buffer(static_cast<std::size_t>(size));
        home_.file("work/lines", bytes);
        std::FILE *const file = std::fopen(home_.path("work/lines").c_str(), "r");
        while (found.size() < 20 && mfgets(buffer.data(), size, file))
            found.push_back(buffer.data());
        std::fclose(file);
        return found;
    }
    using List = std::vector<std::string>;
};

} // namespace

TEST_F(Search, DatabaseLinesThatBeginWithZeroAreIgnored) {
    database("TEXFONTS", "/Vol/fonts/\ncmr10.tfm\n0\ncmr12.tfm\n");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(entries(tfmTable), (List{"/Vol/fonts/|cmr10.tfm", "/Vol/fonts/|cmr12.tfm"}));
}

TEST_F(Search, LastDatabaseLineWithoutALineEndLosesACharacter) {
    database("TEXFONTS", "/Vol/fonts/\ncmr10.tfm\ncmr12.tfm");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(entries(tfmTable), (List{"/Vol/fonts/|cmr10.tfm", "/Vol/fonts/|cmr12.tf"}));
}

TEST_F(Search, DatabaseNamesBeforeTheFirstFolderHaveNone) {
    database("TEXFONTS", "cmr10.tfm\n");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(entries(tfmTable), List{"|cmr10.tfm"});
    EXPECT_EQ(taken(searchDatabase(5, "cmr10.tfm")), "(null)");
    home_.file("work/cmr10.tfm");
    EXPECT_EQ(taken(searchDatabase(5, "cmr10.tfm")), home_.path("work/cmr10.tfm"));
}

TEST_F(Search, DatabaseLineEnds) {
    database("TEXFONTS", "/V/\ra\rb\r");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(entries(tfmTable), (List{"/V/|a", "/V/|b"}));
    // A carriage return and a line feed are two line ends, so an empty name follows each name.
    database("TEXFONTS", "/V/\r\na\r\n");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(entries(tfmTable), (List{"/V/|", "/V/|a", "/V/|"}));
}

TEST_F(Search, DatabaseThatIsEmptyOrBinary) {
    database("TEXFONTS", "");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(entries(tfmTable), List{});
    EXPECT_EQ(dataBaseSearch, 1);
    EXPECT_EQ(taken(searchDatabase(5, "x")), "(null)");
    std::string junk;
    for (int i = 0; i < 300000; i++)
        junk += static_cast<char>(i * 2654435761u >> 11);
    database("TEXFONTS", junk);
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_GT(entries(tfmTable).size(), 100u);
}

TEST_F(Search, DatabaseLinesOfAHundredThousandBytesComeInPieces) {
    database("TEXFONTS", "/V/\n" + std::string(100000, 'x') + "\nlast\n");
    read_hash_table("TEXFONTS", &tfmTable);
    const List found = entries(tfmTable);
    EXPECT_EQ(found.back(), "/V/|last");
    // 97 pieces of 1,022 characters and the rest; each loses its last one.
    EXPECT_EQ(found.size(), 99u);
    EXPECT_EQ(found.front().size(), 4 + 1021u);
}

TEST_F(Search, MissingDatabaseTurnsDatabaseSearchesOff) {
    read_hash_table("TEXINPUTS", &texinputsTable);
    EXPECT_EQ(dataBaseSearch, 0);
    EXPECT_EQ(front_->printed, "I can't find the " + home_.path("data/Quillon/TEXINPUTS") +
                                   " database file.\nTurning off database searches.\n");
}

TEST_F(Search, DatabaseThatIsAFolderCountsAsMissing) {
    home_.folder("data/Quillon/TEXINPUTS");
    read_hash_table("TEXINPUTS", &texinputsTable);
    EXPECT_EQ(dataBaseSearch, 0);
}

TEST_F(Search, UnreadableDatabaseCountsAsMissing) {
    database("TEXINPUTS", "/V/\na\n");
    ASSERT_EQ(::chmod(home_.path("data/Quillon/TEXINPUTS").c_str(), 0), 0);
    EXPECT_EQ(as_ordinary_user([] {
                  read_hash_table("TEXINPUTS", &texinputsTable);
                  return dataBaseSearch;
              }),
              0);
}

TEST_F(Search, TablesAreReadOnceInTheirOrderUntilOneIsMissing) {
    database("TEXINPUTS", "/V/\na\n");
    doDebug = 1;
    EXPECT_EQ(in_child([&] {
                  ReadTables();
                  const std::string expected = "Reading file databases.\nI can't find the " +
                                               home_.path("data/Quillon/DVIPSHEADERS") +
                                               " database file.\nTurning off database searches.\n";
                  if (front_->printed != expected || !entries(texinputsTable).empty() ||
                      entries(*database_list(1)).size() != 1)
                      return 1;
                  dataBaseSearch = 1;
                  ReadTables();
                  return front_->printed == expected ? 0 : 2;
              }),
              0);
}

namespace {

// Makes the five databases, opens them, calls CHANGE, and returns the names in the database of TeX inputs.
template <class Change>
std::vector<std::string> inputs_after(const TemporaryHome &home, const std::string &inputs, Change change) {
    for (const char *const name : {"TEXINPUTS", "DVIPSHEADERS", "TYPE1FONTS", "TEXFONTS", "VFFONTS"})
        home.file(std::string("data/Quillon/") + name, inputs);
    std::vector<std::string> found;
    const std::string result = home.path("work/result");
    std::filesystem::remove(result);
    in_child([&] {
        ReadTables();
        change();
        std::ofstream out(result);
        const HashList *const list = database_list(1);
        for (const HashNode *node = list->nodes; node && node->next; node = &list->nodes[node->next])
            out << name_of(list, node) << '\n';
        return 0;
    });
    std::ifstream in(result);
    for (std::string line; std::getline(in, line);)
        found.push_back(line);
    return found;
}

} // namespace

TEST_F(Search, DatabaseIsReadWhenItIsFirstSearched) {
    home_.file("data/in/x.tex");
    EXPECT_EQ(inputs_after(home_, home_.path("data/in") + "/\nx.tex\n",
                           [&] {
                               if (texinputsTable.nodes || taken(searchDatabase(1, "x.tex")) == "(null)" ||
                                   !texinputsTable.nodes || tfmTable.nodes)
                                   ::_exit(1);
                           }),
              List{"x.tex"});
}

TEST_F(Search, DatabaseThatWasReplacedOrRemovedIsThatOfTheStart) {
    const std::string path = home_.path("data/Quillon/TEXINPUTS");
    EXPECT_EQ(inputs_after(home_, "/V/\nold\n",
                           [&] {
                               home_.file("data/Quillon/new", "/V/\nnew\n");
                               std::filesystem::rename(home_.path("data/Quillon/new"), path);
                           }),
              List{"old"});
    EXPECT_EQ(inputs_after(home_, "/V/\nold\n", [&] { std::filesystem::remove(path); }), List{"old"});
}

TEST_F(Search, DatabaseThatGrowsOrShrinksIsReadAsItStands) {
    const std::string path = home_.path("data/Quillon/TEXINPUTS");
    EXPECT_EQ(inputs_after(home_, "/V/\na\n", [&] { std::ofstream(path, std::ios::app) << "b\n"; }),
              (List{"a", "b"}));
    EXPECT_EQ(inputs_after(home_, "/V/\na\nb\n", [&] { std::filesystem::resize_file(path, 6); }), List{"a"});
    EXPECT_EQ(inputs_after(home_, "/V/\na\n", [&] { std::filesystem::resize_file(path, 0); }), List{});
}

TEST_F(Search, DatabaseOfTheLineReadersOwnLines) {
    // The names that result when mfgets reads the same bytes and the last character of each line is cut.
    unsigned seed = 1;
    for (int round = 0; round < 300; round++) {
        std::string bytes;
        for (int i = 0; i < 400; i++) {
            seed = seed * 1103515245 + 12345;
            static const std::string alphabet("\n\r\n\r0/ab\0c/", 12);
            const char byte = alphabet[seed >> 16 & 0x7FFF ? (seed >> 16) % alphabet.size() : 0];
            bytes.append(seed % 37 == 0 ? 1022 : 1, byte);
        }
        database("TEXFONTS", bytes);
        read_hash_table("TEXFONTS", &tfmTable);
        List expected;
        std::string folder;
        std::FILE *const file = std::fopen(home_.path("data/Quillon/TEXFONTS").c_str(), "r");
        char line[1024];
        while (mfgets(line, sizeof line, file)) {
            if (const std::size_t length = std::strlen(line))
                line[length - 1] = '\0';
            if (line[0] == '/')
                folder = line;
            else if (line[0] != '0')
                expected.push_back(folder + "|" + line);
        }
        std::fclose(file);
        ASSERT_EQ(entries(tfmTable), expected) << round;
    }
}

TEST_F(Search, OneNameFortyThousandTimesIsReadAtOnce) {
    std::string list = home_.path("data/two") + "/\n";
    for (int i = 0; i < 40000; i++)
        list += "x\n";
    home_.file("data/two/y");
    database("TEXFONTS", list + "y\n");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(entries(tfmTable).size(), 40001u);
    EXPECT_EQ(taken(searchDatabase(5, "y")), home_.path("data/two/y"));
}

TEST_F(Search, FirstFolderThatHasTheFileWins) {
    home_.file("data/two/x.tfm");
    home_.file("data/three/x.tfm");
    database("TEXFONTS", home_.path("data/one") + "/\nx.tfm\n" + home_.path("data/two") + "/\nx.tfm\n" +
                             home_.path("data/three") + "/\nx.tfm\n");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(taken(searchDatabase(5, "x.tfm")), home_.path("data/two/x.tfm"));
    EXPECT_EQ(numberOfEntries, 1);
    EXPECT_EQ(taken(searchDatabase(5, "X.tfm")), "(null)");
    EXPECT_EQ(taken(searchDatabase(0, "x.tfm")), home_.path("data/two/x.tfm")); // from the cache
    EXPECT_EQ(taken(searchDatabase(6, "y.tfm")), "(null)");
}

TEST_F(Search, CurrentFolderGoesBeforeTheDatabase) {
    home_.file("data/two/x.tfm");
    home_.file("work/x.tfm");
    database("TEXFONTS", home_.path("data/two") + "/\nx.tfm\n");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(taken(searchDatabase(5, "x.tfm")), home_.path("work/x.tfm"));
    EXPECT_EQ(numberOfEntries, 0);
}

TEST_F(Search, NameWithASlashNeverReadsTheLists) {
    home_.file("data/two/sub/x.tfm");
    database("TEXFONTS", home_.path("data/two") + "/\nsub/x.tfm\n");
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(taken(searchDatabase(5, "sub/x.tfm")), "(null)");
}

TEST_F(Search, HundredAndFirstFindIsNotCachedAndWalksTheListAgain) {
    std::string list = home_.path("data/fonts") + "/\n";
    home_.folder("data/fonts");
    for (int i = 1; i <= 101; i++) {
        home_.file("data/fonts/f" + std::to_string(i));
        list += "f" + std::to_string(i) + "\n";
    }
    database("TEXFONTS", list);
    read_hash_table("TEXFONTS", &tfmTable);
    for (int i = 1; i <= 101; i++)
        EXPECT_NE(taken(searchDatabase(5, ("f" + std::to_string(i)).c_str())), "(null)");
    EXPECT_EQ(numberOfEntries, 100);
    EXPECT_NE(taken(searchCache("f100")), "(null)");
    EXPECT_EQ(taken(searchCache("f101")), "(null)");
    EXPECT_EQ(taken(searchDatabase(5, "f101")), home_.path("data/fonts/f101"));
}

TEST_F(Search, CachedFileThatWasDeletedIsAMissAndStays) {
    home_.file("work/x");
    addToCache("x", home_.path("work/x").c_str());
    EXPECT_EQ(taken(searchCache("x")), home_.path("work/x"));
    std::filesystem::remove(home_.path("work/x"));
    EXPECT_EQ(taken(searchCache("x")), "(null)");
    EXPECT_EQ(numberOfEntries, 1);
    home_.file("work/x");
    EXPECT_EQ(taken(searchCache("x")), home_.path("work/x"));
}

TEST_F(Search, CacheIsPassedByWhileDebugging) {
    home_.file("work/x");
    addToCache("x", home_.path("work/x").c_str());
    doDebug = 1;
    EXPECT_EQ(taken(searchCache("x")), "(null)");
    doDebug = 0;
    clearCache();
    EXPECT_EQ(numberOfEntries, 0);
    EXPECT_EQ(taken(searchCache("x")), "(null)");
}

TEST_F(Search, NamesThatDoNotFitTheCacheAreNotRecorded) {
    addToCache(std::string(256, 'n').c_str(), "/V/x");
    addToCache("x", std::string(256, 'p').c_str());
    EXPECT_EQ(numberOfEntries, 0);
}

TEST_F(Search, CurrentFolderSearchTracesWhileDebugging) {
    home_.file("work/x");
    home_.folder("work/folder");
    doDebug = 1;
    const std::string path = home_.path("work/x");
    EXPECT_EQ(taken(searchCurrentDirectory("x")), path);
    EXPECT_EQ(front_->printed, "\nTrying <" + path + ">.\nFound <" + path + ">.\n");
    EXPECT_EQ(taken(searchCurrentDirectory("folder")), "(null)");
    EXPECT_EQ(taken(searchCurrentDirectory(std::string(251 - curr_dir.length(), 'x').c_str())), "(null)");
}

TEST_F(Search, LineReaderTakesCarriageReturnLineFeedAsTwoLines) {
    EXPECT_EQ(lines("a\r\nb"), (List{"a\n", "\n", "b"}));
}

TEST_F(Search, LineReaderTakesLineFeedCarriageReturnAsOne) {
    EXPECT_EQ(lines("a\n\rb"), (List{"a\n", "b"}));
    EXPECT_EQ(lines("a\n\n"), (List{"a\n", "\n"}));
    EXPECT_EQ(lines("a\n"), List{"a\n"});
    EXPECT_EQ(lines(""), List{});
}

TEST_F(Search, LineReaderOfSizeTwoReturnsEmptyStrings) {
    EXPECT_EQ(lines("ab\n", 2), List(20, ""));
    EXPECT_EQ(lines("", 2), List{});
}

TEST_F(Search, LineReaderReturnsLongLinesInPieces) {
    EXPECT_EQ(lines("abcdefg\nh", 5), (List{"abc", "def", "g\n", "h"}));
    EXPECT_EQ(lines("abc\nd\n", 5), (List{"abc", "\n", "d\n"}));
}

TEST_F(Search, SignatureOfABundleIsInItsPackageInfo) {
    OSType signature = 1;
    home_.file("work/x.app/Contents/PkgInfo", "APPLXyzw");
    EXPECT_EQ(get_sig(home_.path("work/x.app").c_str(), &signature), 1);
    EXPECT_EQ(signature, four("Xyzw"));
    home_.file("work/short.app/Contents/PkgInfo", "APPLX");
    EXPECT_EQ(get_sig(home_.path("work/short.app").c_str(), &signature), 0);
    EXPECT_EQ(signature, 0u);
    home_.folder("work/none.app");
    EXPECT_EQ(get_sig(home_.path("work/none.app").c_str(), &signature), 0);
}

TEST_F(Search, SignatureOfAFileIsItsCreator) {
    OSType signature = 1;
    home_.file("work/x");
    EXPECT_EQ(get_sig(home_.path("work/x").c_str(), &signature), 1);
    EXPECT_EQ(signature, four("????"));
    EXPECT_EQ(get_sig(home_.path("work/none").c_str(), &signature), 0);
    EXPECT_EQ(get_sig("", &signature), 0);
    EXPECT_EQ(IsApp(nullptr), 0);
    EXPECT_EQ(IsApp(""), 0);
    EXPECT_EQ(IsApp(home_.path("work/x").c_str()), 1);
    EXPECT_EQ(IsApp(home_.path("work").c_str()), 0);
}

TEST_F(Search, EditorInfoHasTwoNearlyEqualCodes) {
    EXPECT_EQ(get_editor_info(""), four("ttxt"));
    EXPECT_EQ(get_editor_info(home_.path("work/none").c_str()), four("ttxt"));
    home_.folder("work/none.app");
    EXPECT_EQ(get_editor_info(home_.path("work/none.app").c_str()), four("txtt"));
    FSSpec plain;
    ASSERT_EQ(FSMakeFSSpec(0, 0, home_.mac("work/plain").c_str(), &plain), fnfErr);
    ASSERT_EQ(FSpCreate(&plain, four("ALFA"), four("TEXT")), noErr);
    EXPECT_EQ(get_editor_info(home_.path("work/plain").c_str()), four("ALFA"));
    home_.file("work/x.app/Contents/PkgInfo", "APPLEdit");
    EXPECT_EQ(get_editor_info(home_.path("work/x.app").c_str()), four("Edit"));
}

TEST_F(Search, OpenedForWritingADviFileBecomesTheCurrentOne) {
    std::FILE *file = myfopen("out.dvi", "wb");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_EQ(current_dvifile.view(), home_.path("work/out.dvi"));
    current_dvifile.clear();
    file = myfopen("out.dvi", "rb");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_TRUE(current_dvifile.empty());
    EXPECT_EQ(myfopen("none/out.dvi", "wb"), nullptr);
    EXPECT_TRUE(current_dvifile.empty());
}

TEST_F(Search, OpenedFilesAreNotInheritedAndFoldersAreRefused) {
    home_.file("work/x");
    std::FILE *const file = myfopen("x", "r");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(::fcntl(::fileno(file), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    std::fclose(file);
    EXPECT_EQ(myfopen(home_.path("work").c_str(), "r"), nullptr);
    EXPECT_EQ(myfopen("none", "r"), nullptr);
}

TEST_F(Search, AliasesAreResolvedBeforeReading) {
    home_.file("data/target", "t");
    std::filesystem::create_symlink(home_.path("data/target"), home_.path("work/link"));
    BoundedString<1024> path;
    doDebug = 1;
    path.copy(home_.mac("work/link"));
    EXPECT_EQ(MyResolveAliasFile(path), noErr);
    EXPECT_EQ(path.view(), home_.mac("data/target"));
    EXPECT_EQ(front_->printed, "<" + home_.mac("work/link") + "> -> <" + home_.mac("data/target") + ">\n");
    path.copy(home_.mac("work/none"));
    EXPECT_EQ(MyResolveAliasFile(path), fnfErr);
}

TEST_F(Search, EveryComponentIsResolved) {
    home_.file("data/folder/x");
    std::filesystem::create_directory_symlink(home_.path("data/folder"), home_.path("work/link"));
    std::filesystem::create_symlink("b", home_.path("work/a"));
    std::filesystem::create_symlink("a", home_.path("work/b"));
    BoundedString<1024> path;
    path.copy(home_.mac("work/link/x"));
    EXPECT_EQ(MyResolve(path), 1);
    EXPECT_EQ(path.view(), home_.mac("data/folder/x"));
    path.copy("tmp:");
    EXPECT_EQ(MyResolve(path), 1);
    EXPECT_EQ(path.view(), "tmp:");
    path.copy(home_.mac("work/none/x"));
    EXPECT_EQ(MyResolve(path), 0);
    path.copy(home_.mac("work/a"));
    EXPECT_EQ(MyResolve(path), 0);
    EXPECT_EQ(path.view(), home_.mac("work/a"));
}
