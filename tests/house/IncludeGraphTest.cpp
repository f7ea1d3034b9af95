#include "house/IncludeGraph.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>

namespace fs = std::filesystem;
using house::IncludeGraph;

namespace
{

std::string joined(const std::vector<std::string>& v)
{
    std::string text;
    for (const std::string& line : v) text += line + "\n";
    return text;
}

/// A small house in order: three layers, a public header with a source and one without.
class SmallHouse
{
public:
    SmallHouse()
    {
        fs::remove_all(root);
        write("dt2Library/LAYERS.md", "| 0 | `low/` | . | nothing of ours |\n| 1 | `mid/` | . | `low/` |\n"
                                      "| 1 | `aside/` | . | `low/` |\n| 6 | `engine/` | . | `mid/` |\n");
        write("include/Free.h", "#include <vector>\n");
        write("include/Value.h", "#include \"Free.h\"\n");
        write("dt2Library/low/Low.h", "#include <string>\n");
        write("dt2Library/mid/Value.cpp", "#include \"Value.h\"\n#include \"engine/Dt2.h\"\n#include \"low/Low.h\"\n");
        write("dt2Library/aside/Aside.h", "#include \"low/Low.h\"\n");
        write("dt2Library/engine/Dt2.h", "#include \"Value.h\"\n#include \"low/Low.h\"\n");
        write("dt2Library/engine/Dt2.cpp", "#include \"engine/Dt2.h\"\n#include \"aside/Aside.h\"\n");
    }

    ~SmallHouse() { fs::remove_all(root); }
    SmallHouse(const SmallHouse&) = delete;
    SmallHouse& operator=(const SmallHouse&) = delete;

    void write(const std::string& path, const std::string& content)
    {
        fs::create_directories((root / path).parent_path());
        std::ofstream(root / path) << content;
    }
    std::string check() const { return joined(IncludeGraph(root).check()); }

private:
    // Tests run side by side, each in a process of its own.
    const fs::path root = fs::temp_directory_path() / ("lumo25d_small_house_" + std::to_string(::getpid()));
};

} // namespace

TEST(IncludeGraph, CodeBreaksTheLayersOfTheTable)
{
    const IncludeGraph graph(LUMO25D_SOURCE_DIR);
    EXPECT_GT(graph.numFiles(), 20u);
    EXPECT_EQ(joined(graph.check()), "");
}

TEST(IncludeGraph, PlantedViolationsGoUnnoticed)
{
    EXPECT_EQ(SmallHouse().check(), "");

    const struct
    {
        const char *path, *content, *complaint;
    } aPlanted[] = {
        {"dt2Library/low/Low.h", "#include \"mid/Mid.h\"\n", "low may not include mid/Mid.h (mid)"},
        {"dt2Library/low/Low.h", "#include \"Value.h\"\n", "low may not include Value.h (mid)"},
        {"dt2Library/aside/Aside.cpp", "#include \"mid/Mid.h\"\n", "aside may not include mid/Mid.h (mid)"},
        {"dt2Library/engine/Fan.h", "#include \"aside/Aside.h\"\n", "engine may not include aside/Aside.h"},
        {"dt2Library/engine/Fan.h", "#include \"engine/Dt2.h\"\n", "a header includes engine/Dt2.h"},
        {"dt2Library/mid/Mid.h", "#include \"Mid.h\"\n", "neither a bare public nor a qualified internal header"},
        {"dt2Library/mid/Mid.h", "#include \"mid/Gone.h\"\n", "neither a bare public nor a qualified internal header"},
        {"dt2Library/mid/Other.cpp", "  #  include <Value.h> // x\n", "our own header in angle brackets: Value.h"},
        {"dt2Library/mid/Mid.h", "#include \"mid/Other.h\"\n", "cycle of headers: dt2Library/mid/Mid.h -> "},
        {"dt2Library/stray/Stray.h", "\n", "the folder is not in dt2Library/LAYERS.md"},
        {"include/Free.h", "#include \"Value.h\"\n", "-> include/Free.h"},
        {"include/Free.h", "#include \"low/Low.h\"\n", "a public header includes an internal one: low/Low.h"},
        {"include/Value.h", "#include <iostream>\n", "too much for a public header: <iostream>"},
        {"dt2Library/LAYERS.md", "no table\n", "holds no table of layers"},
        {"dt2Library/LAYERS.md", "| 0 | `low/` | . | `mid/` |\n| 1 | `mid/` | . | `low/` |\n",
         "low may not look at mid"},
        {"dt2Library/LAYERS.md", "| 0 | `low/` | . | `mid/` |\n| 0 | `mid/` | . | `low/` |\n", "cycle of folders"},
        {"dt2Library/LAYERS.md", "| 0 | `low/` | . | everything |\n", "no folder named in the last column"},
    };
    for (const auto& planted : aPlanted) {
        SmallHouse small;
        small.write("dt2Library/mid/Mid.h", "#include \"low/Low.h\"\n");
        small.write("dt2Library/mid/Other.h", "#include \"mid/Mid.h\"\n");
        small.write(planted.path, planted.content);
        EXPECT_NE(small.check().find(planted.complaint), std::string::npos)
            << planted.path << ": " << planted.content << "complaints:\n"
            << small.check();
    }
}

TEST(IncludeGraph, HeaderOfNoFolderHidesALookUpward)
{
    SmallHouse small;
    small.write("include/Free.h", "\n");
    small.write("include/Value.h", "\n");
    small.write("include/Bridge.h", "#include \"Value.h\"\n");
    small.write("dt2Library/low/Low.h", "#include \"Bridge.h\"\n");
    small.write("dt2Library/low/Low.cpp", "#include \"Bridge.h\"\n"); // a source implements what it declares
    EXPECT_EQ(small.check(), "dt2Library/low/Low.h: low may not include Bridge.h (mid)\n");
}
