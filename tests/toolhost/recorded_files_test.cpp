// The lists of engines' recorders, and what is kept of a document from one run to the next.
#include <gtest/gtest.h>

#include "common/document_record.h"
#include "support/temporary_home.h"
#include "toolhost/recorded_files.h"

namespace {

using Paths = std::vector<std::string>;

TEST(RecordedFiles, NamesAreAbsoluteAndStandOnce) {
    const toolhost::RecordedFiles files = toolhost::read_recorder_list("PWD /work/my folder\n"
                                                                       "INPUT /etc/texmf.cnf\n"
                                                                       "INPUT x.tex\n"
                                                                       "INPUT ./x.tex\n"
                                                                       "OUTPUT x.log\n"
                                                                       "OUTPUT out/x.pdf\n");
    EXPECT_EQ(files.read, (Paths{"/etc/texmf.cnf", "/work/my folder/x.tex"}));
    EXPECT_EQ(files.written, (Paths{"/work/my folder/x.log", "/work/my folder/out/x.pdf"}));
    EXPECT_TRUE(files.wrote("/work/my folder/x.log"));
    EXPECT_FALSE(files.wrote("/work/my folder/x.tex"));
}

TEST(RecordedFiles, OnlyWhatWasReadFirstIsCarried) {
    const toolhost::RecordedFiles files = toolhost::read_recorder_list(
        "PWD /w\nINPUT x.aux\nOUTPUT x.aux\nOUTPUT y.dat\nINPUT y.dat\nOUTPUT x.aux\n");
    EXPECT_EQ(files.carried, Paths{"/w/x.aux"});
    EXPECT_TRUE(files.carries("/w/x.aux"));
    EXPECT_FALSE(files.carries("/w/y.dat"));
}

TEST(RecordedFiles, WhatIsNoListHasNoFiles) {
    for (const char *text : {"", "PWD", "INPUT", "INPUT\n", "hello\nOUTPUTx\n", "\n\n"}) {
        const toolhost::RecordedFiles files = toolhost::read_recorder_list(text);
        EXPECT_TRUE(files.read.empty() && files.written.empty() && files.carried.empty()) << text;
    }
    EXPECT_EQ(toolhost::read_recorder_list("PWD /w\nINPUT x").read, Paths{"/w/x"});
    EXPECT_EQ(toolhost::read_recorder_list("INPUT \xff name\n").read, Paths{"/\xff name"});
}

class DocumentRecords : public testing::Test {
  protected:
    quillon::test::TemporaryHome home_;
};

TEST_F(DocumentRecords, WhatIsKeptIsReadAgain) {
    common::DocumentRecord record;
    record.read = {"/w/x.tex", "/w/a \xff.tex"};
    record.written = {"/w/x.aux", "/w/x.pdf"};
    record.carried = {"/w/x.aux"};
    record.outputs = {"/w/x.pdf"};
    record.made = {{"/w/x.bbl", "12"}, {"/w/x.ind", ""}};
    ASSERT_TRUE(common::keep_document_record("/w/x.tex", record));
    const common::DocumentRecord again = common::read_document_record("/w/x.tex");
    EXPECT_EQ(again.read, record.read);
    EXPECT_EQ(again.written, record.written);
    EXPECT_EQ(again.carried, record.carried);
    EXPECT_EQ(again.outputs, record.outputs);
    EXPECT_EQ(again.made, record.made);
    EXPECT_TRUE(common::read_document_record("/w/y.tex").read.empty());
}

TEST_F(DocumentRecords, AThousandAreKept) {
    common::DocumentRecord record;
    for (int i = 0; i < 1100; i++) {
        record.read = {"/w/" + std::to_string(i)};
        ASSERT_TRUE(common::keep_document_record(record.read[0], record));
    }
    int kept = 0;
    for (int i = 0; i < 1100; i++)
        kept += common::read_document_record("/w/" + std::to_string(i)).read.empty() ? 0 : 1;
    EXPECT_LE(kept, 1000);
    EXPECT_GE(kept, 900);
}

} // namespace
