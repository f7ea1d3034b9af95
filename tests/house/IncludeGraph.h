#ifndef LUMO25D_TESTS_HOUSE_INCLUDEGRAPH_H
#define LUMO25D_TESTS_HOUSE_INCLUDEGRAPH_H

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace house
{

/// The include lines of the library, held against the table of dt2Library/LAYERS.md, whose text states the rules.
///
/// Reads everything in the constructor; check() then gives one line of text for each broken rule, each starting with
/// the file's path relative to the project. An empty result means that the house is in order.
class IncludeGraph
{
public:
    /// projectRoot holds include/ and dt2Library/.
    explicit IncludeGraph(const std::filesystem::path& projectRoot);

    std::vector<std::string> check() const;
    /// Headers and sources read.
    std::size_t numFiles() const { return mFiles.size(); }

private:
    struct File
    {
        std::string folder; ///< of dt2Library/; empty for a public header that belongs to none
        bool bHeader = false;
        bool bPublic = false;
        std::vector<std::string> vQuoted; ///< include "..."
        std::vector<std::string> vAngled; ///< include <...>
    };
    struct Folder
    {
        int layer = 0;
        std::set<std::string> sMayInclude; ///< as named in the row
    };
    using Violations = std::vector<std::string>;

    void readTable(const std::filesystem::path& table);
    void readFile(const std::filesystem::path& path, const std::string& key, bool bPublic);
    void assignPublicHeaders();

    /// The file that a quoted include means, by the form that the rules ask for; empty when there is none.
    std::string resolve(const std::string& quoted) const;
    /// Folder and everything that its headers may include, in turn.
    void addClosure(const std::string& folder, std::set<std::string>& sClosure) const;
    /// The folders that an include of `key` brings in; looks through headers that belong to none.
    void collectFolders(const std::string& key, std::set<std::string>& sFolders, std::set<std::string>& sSeen) const;

    void checkForms(Violations& v) const;
    void checkLayers(Violations& v) const;
    void checkCycles(Violations& v) const;

    std::map<std::string, Folder> mFolders;
    std::map<std::string, File> mFiles; ///< by "include/X.h" or "dt2Library/folder/X.h"
    Violations vTableFaults;
};

} // namespace house

#endif
