// SPDX-License-Identifier: Apache-2.0
#include "SourceRules.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <fstream>

namespace bram
{

namespace fs = std::filesystem;

namespace
{
const fs::path qtHeaders = BRAM_QT_HEADERS;

/// The faults of a tree that holds one file.
std::vector<std::string> faultsOf(const std::string &path, const std::string &text)
{
    const QTemporaryDir folder;
    const fs::path file = fs::path(folder.path().toStdString()) / path;
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
    return test::sourceFaults(folder.path().toStdString(), qtHeaders);
}
} // namespace

TEST(Architecture, EachRuleFindsWhatBreaksIt)
{
    const std::string licence = "// SPDX-License-Identifier: Apache-2.0\n";
    const struct {
        std::string path;
        std::string text;
        std::string fault; ///< a part of it; empty when there is none
    } rows[] {
        {"src/model/A.h", "#include \"model/B.h\"\n#include <QString>\n", ""},
        {"src/app/A.h", "#include \"ui/desktop/B.h\"\n#include \"practice/B.h\"\n", ""},
        {"src/ui/desktop/A.h", "#include <QWidget>\n#include \"monitor/B.h\"\n", ""},
        {"src/model/A.h", "#include \"system/B.h\"\n", "includes from system"},
        {"src/audit/A.h", "  #  include \"config/B.h\"\n", "includes from config"},
        {"src/config/A.h", "#include \"audit/B.h\"\n", "includes from audit"},
        {"src/gateway/A.cpp", "#include \"telegram/B.h\"\n", "includes from telegram"},
        {"src/telegram/A.cpp", "#include \"allowlist/B.h\"\n", "includes from allowlist"},
        {"src/monitor/A.cpp", "#include \"practice/B.h\"\n", "includes from practice"},
        {"src/practice/A.cpp", "#include \"ui/terminal/B.h\"\n", "includes from ui"},
        {"src/ui/terminal/A.cpp", "#include \"practice/B.h\"\n", "includes from practice"},
        {"src/ui/terminal/A.cpp", "#include \"app/B.h\"\n", "includes from app"},
        {"src/model/A.h", "#include \"unknown/B.h\"\n", "includes from unknown"},
        {"src/other/A.h", "", "no place in the order"},
        {"src/monitor/A.h", "#include <QtWidgets/QMenu>\n", "user interface"},
        {"src/monitor/A.h", "#include <QColor>\n", "user interface"},
        {"src/practice/A.h", "#include <QMenu>\n", "user interface"},
        {"src/gateway/A.cpp", "connect(a, &A::b, this, [this] { c(1, 2); });", ""},
        {"src/gateway/A.cpp", "connect(a, &A::b, &A::c); // connect(a, b, [c] {})", ""},
        {"src/gateway/A.cpp", "QObject::connect(d(1, 2), &A::b,\n   [=](int e) { f(e, e); });",
         "without a context object"},
        {"src/gateway/A.cpp", "auto a = u\"TODO\"; // doing to-do lists, not TODOS\n", ""},
        {"src/gateway/A.cpp", "a(); // TODO: b\n", "TODO"},
        {"src/gateway/A.cpp", "/* FIXME */\n", "FIXME"},
        {"src/gateway/A.cpp", "/// A stub for now.\n", "stub"},
        {"src/gateway/A.cpp",
         "const auto a = co_await b();\nif (const auto c = co_await d(); c) {}", ""},
        {"src/gateway/A.cpp", "if (co_await a()) {}", "awaits"},
        {"src/gateway/A.cpp", "while (!co_await a()) {}", "awaits"},
        {"src/gateway/A.cpp", "const auto b = c\n    ? co_await a() : d;", "awaits"},
    };
    for (const auto &row : rows) {
        const auto faults = faultsOf(row.path, licence + row.text);
        if (row.fault.empty()) {
            EXPECT_THAT(faults, testing::IsEmpty()) << row.text;
        } else {
            EXPECT_THAT(faults, testing::ElementsAre(testing::HasSubstr(row.fault))) << row.text;
        }
    }
    for (const char *path : {"src/model/A.h", "tests/model/A.cpp", "bench/CMakeLists.txt"}) {
        EXPECT_THAT(faultsOf(path, "#pragma once\n" + licence),
                    testing::ElementsAre(testing::HasSubstr("SPDX")))
            << path;
    }
    EXPECT_THAT(faultsOf("tests/fuzz/corpus/A/b", "any text"), testing::IsEmpty());
}

TEST(Architecture, TheSourcesKeepTheRules)
{
    ASSERT_TRUE(fs::exists(fs::path(BRAM_SOURCE_FOLDER) / "src/model"));
    EXPECT_THAT(test::sourceFaults(BRAM_SOURCE_FOLDER, qtHeaders), testing::IsEmpty());
}

} // namespace bram
