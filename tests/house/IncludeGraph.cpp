#include "house/IncludeGraph.h"

#include <algorithm>
#include <fstream>
#include <regex>

namespace fs = std::filesystem;

namespace house
{

namespace
{

using Graph = std::map<std::string, std::set<std::string>>;

/// Every `name/` in backticks.
std::vector<std::string> folderNames(const std::string& cell)
{
    static const std::regex pattern("`([A-Za-z0-9_]+)/`");
    std::vector<std::string> v;
    for (std::sregex_iterator it(cell.begin(), cell.end(), pattern), end; it != end; ++it) v.push_back((*it)[1]);
    return v;
}

/// Adds the cycle of the graph that a walk from the last node of vPath meets first, as "a -> b -> a".
bool findCycle(const Graph& graph, std::vector<std::string>& vPath, std::set<std::string>& sDone, std::string& cycle)
{
    const std::string node = vPath.back();
    const auto first = std::find(vPath.begin(), vPath.end() - 1, node);
    if (first != vPath.end() - 1) {
        for (auto it = first; it != vPath.end(); ++it) cycle += (it == first ? "" : " -> ") + *it;
        return true;
    }
    const auto edges = graph.find(node);
    if (edges != graph.end() && sDone.count(node) == 0) {
        for (const std::string& next : edges->second) {
            vPath.push_back(next);
            if (findCycle(graph, vPath, sDone, cycle)) return true;
            vPath.pop_back();
        }
    }
    sDone.insert(node);
    return false;
}

std::string findCycle(const Graph& graph)
{
    std::set<std::string> sDone;
    std::string cycle;
    for (const auto& entry : graph) {
        std::vector<std::string> vPath = {entry.first};
        if (findCycle(graph, vPath, sDone, cycle)) break;
    }
    return cycle;
}

} // namespace

IncludeGraph::IncludeGraph(const fs::path& projectRoot)
{
    readTable(projectRoot / "dt2Library" / "LAYERS.md");
    for (const char* top : {"include", "dt2Library"}) {
        for (const fs::directory_entry& item : fs::recursive_directory_iterator(projectRoot / top)) {
            const std::string extension = item.path().extension().string();
            if (!item.is_regular_file() || (extension != ".h" && extension != ".cpp")) continue;
            const std::string key = item.path().lexically_relative(projectRoot).generic_string();
            readFile(item.path(), key, std::string(top) == "include");
        }
    }
    assignPublicHeaders();
}

void IncludeGraph::readTable(const fs::path& table)
{
    std::ifstream in(table);
    std::string line;
    static const std::regex row(R"(\|\s*(\d+)\s*\|([^|]*)\|[^|]*\|([^|]*)\|\s*)");
    std::smatch cells;
    while (std::getline(in, line)) {
        if (!std::regex_match(line, cells, row)) continue;
        const std::string below = cells[3];
        const std::vector<std::string> vBelow = folderNames(below);
        if (vBelow.empty() && below.find("nothing of ours") == std::string::npos) {
            vTableFaults.push_back("dt2Library/LAYERS.md: no folder named in the last column of " + line);
        }
        for (const std::string& name : folderNames(cells[2])) {
            mFolders[name] = {std::stoi(cells[1]), {vBelow.begin(), vBelow.end()}};
        }
    }
    if (mFolders.empty()) vTableFaults.push_back("dt2Library/LAYERS.md: holds no table of layers");
    for (const auto& [name, folder] : mFolders) {
        for (const std::string& below : folder.sMayInclude) {
            const auto it = mFolders.find(below);
            if (it == mFolders.end() || it->second.layer > folder.layer) {
                vTableFaults.push_back("dt2Library/LAYERS.md: " + name + " may not look at " + below);
            }
        }
    }
}

void IncludeGraph::readFile(const fs::path& path, const std::string& key, bool bPublic)
{
    static const std::regex pattern(R"(^\s*#\s*include\s*(["<])([^">]+)[">].*)");
    File& file = mFiles[key];
    file.bHeader = path.extension() == ".h";
    file.bPublic = bPublic;
    if (!bPublic) file.folder = path.parent_path().filename().string();
    std::ifstream in(path);
    std::string line;
    std::smatch match;
    while (std::getline(in, line)) {
        if (!std::regex_match(line, match, pattern)) continue;
        (match[1] == "<" ? file.vAngled : file.vQuoted).push_back(match[2]);
    }
}

void IncludeGraph::assignPublicHeaders()
{
    std::map<std::string, std::string> mStemToFolder;
    for (const auto& [key, file] : mFiles) {
        if (!file.bHeader) mStemToFolder[fs::path(key).stem().string()] = file.folder;
    }
    for (auto& [key, file] : mFiles) {
        const auto it = mStemToFolder.find(fs::path(key).stem().string());
        if (file.bPublic && it != mStemToFolder.end()) file.folder = it->second;
    }
}

std::string IncludeGraph::resolve(const std::string& quoted) const
{
    const bool bQualified = quoted.find('/') != std::string::npos;
    const std::string key = (bQualified ? "dt2Library/" : "include/") + quoted;
    return mFiles.count(key) != 0 ? key : std::string();
}

void IncludeGraph::addClosure(const std::string& folder, std::set<std::string>& sClosure) const
{
    const auto it = mFolders.find(folder);
    if (!sClosure.insert(folder).second || it == mFolders.end()) return;
    for (const std::string& below : it->second.sMayInclude) addClosure(below, sClosure);
}

void IncludeGraph::collectFolders(const std::string& key, std::set<std::string>& sFolders,
                                  std::set<std::string>& sSeen) const
{
    const File& file = mFiles.at(key);
    if (!file.folder.empty()) {
        sFolders.insert(file.folder);
        return;
    }
    if (!sSeen.insert(key).second) return;
    for (const std::string& quoted : file.vQuoted) {
        const std::string next = resolve(quoted);
        if (!next.empty()) collectFolders(next, sFolders, sSeen);
    }
}

std::vector<std::string> IncludeGraph::check() const
{
    Violations v = vTableFaults;
    checkForms(v);
    checkLayers(v);
    checkCycles(v);
    return v;
}

void IncludeGraph::checkForms(Violations& v) const
{
    for (const auto& [key, file] : mFiles) {
        for (const std::string& quoted : file.vQuoted) {
            if (file.bPublic && quoted.find('/') != std::string::npos) {
                v.push_back(key + ": a public header includes an internal one: " + quoted);
            } else if (resolve(quoted).empty()) {
                v.push_back(key + ": neither a bare public nor a qualified internal header: " + quoted);
            }
            if (file.bHeader && quoted == "engine/Dt2.h") v.push_back(key + ": a header includes engine/Dt2.h");
        }
        for (const std::string& angled : file.vAngled) {
            if (!resolve(angled).empty()) v.push_back(key + ": our own header in angle brackets: " + angled);
            // Headers of the standard library have no ending.
            if (file.bPublic && (angled == "iostream" || angled.find('.') != std::string::npos)) {
                v.push_back(key + ": too much for a public header: <" + angled + ">");
            }
        }
    }
}

void IncludeGraph::checkLayers(Violations& v) const
{
    for (const auto& [key, file] : mFiles) {
        if (file.folder.empty()) continue;
        const auto own = mFolders.find(file.folder);
        if (own == mFolders.end()) {
            v.push_back(key + ": the folder is not in dt2Library/LAYERS.md");
            continue;
        }
        std::set<std::string> sAllowed;
        addClosure(file.folder, sAllowed);
        for (const std::string& quoted : file.vQuoted) {
            const std::string target = resolve(quoted);
            if (target.empty() || quoted == "engine/Dt2.h") continue;
            std::set<std::string> sFolders;
            std::set<std::string> sSeen;
            if (file.bHeader || !mFiles.at(target).folder.empty()) collectFolders(target, sFolders, sSeen);
            for (const std::string& folder : sFolders) {
                const auto it = mFolders.find(folder);
                const bool bLower = it != mFolders.end() && it->second.layer < own->second.layer;
                if (sAllowed.count(folder) != 0 || (!file.bHeader && bLower)) continue;
                v.push_back(key + ": " + file.folder + " may not include " + quoted + " (" + folder + ")");
            }
        }
    }
}

void IncludeGraph::checkCycles(Violations& v) const
{
    Graph headers;
    for (const auto& [key, file] : mFiles) {
        if (!file.bHeader) continue;
        for (const std::string& quoted : file.vQuoted) {
            const std::string target = resolve(quoted);
            if (!target.empty()) headers[key].insert(target);
        }
    }
    const std::string fileCycle = findCycle(headers);
    if (!fileCycle.empty()) v.push_back("cycle of headers: " + fileCycle);

    // The edges of the code lie within the table, so a table without a cycle leaves the folders without one.
    Graph folders;
    for (const auto& [name, folder] : mFolders) folders[name] = folder.sMayInclude;
    const std::string folderCycle = findCycle(folders);
    if (!folderCycle.empty()) v.push_back("cycle of folders in dt2Library/LAYERS.md: " + folderCycle);
}

} // namespace house
