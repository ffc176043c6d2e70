// The tables and blocks of a document in docs/, for tests that hold it to the code.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace documents {

// A row's cells without the blanks and backticks around them.
using Row = std::vector<std::string>;

struct Section {
    std::string heading;
    std::vector<Row> rows;           // of all its tables, without their heads
    std::vector<std::string> lines;  // of its block between fences
};

inline std::string Stripped(std::string text, const std::string& around) {
    text.erase(0, text.find_first_not_of(around));
    return text.erase(text.find_last_not_of(around) + 1);
}

inline std::string Plain(const std::string& cell) {
    return Stripped(Stripped(cell, " "), "`");
}

inline Row CellsOf(const std::string& line) {
    Row cells;
    for (std::size_t at = 1; at < line.size();) {
        const std::size_t end = std::min(line.find('|', at), line.size());
        cells.push_back(Plain(line.substr(at, end - at)));
        at = end + 1;
    }
    return cells;
}

// In the document's order; what stands above the first heading is a section without one.
inline std::vector<Section> Read(const std::string& name) {
    std::ifstream file(DOCUMENT_FOLDER "/" + name);
    std::vector<Section> sections(1);
    bool isInBlock = false;
    bool isBelowHead = false;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("```", 0) == 0) {
            isInBlock = !isInBlock;
        } else if (isInBlock) {
            sections.back().lines.push_back(line);
        } else if (line.rfind('#', 0) == 0) {
            sections.push_back({Stripped(line, "# "), {}, {}});
        } else if (line.rfind("|---", 0) == 0) {
            isBelowHead = true;
        } else if (line.rfind('|', 0) != 0) {
            isBelowHead = false;
        } else if (isBelowHead) {
            sections.back().rows.push_back(CellsOf(line));
        }
    }
    return sections;
}

// The last section of this heading; an empty one when there is none.
inline Section Find(const std::vector<Section>& sections, const std::string& heading) {
    Section found;
    for (const Section& section : sections) {
        if (section.heading == heading) {
            found = section;
        }
    }
    return found;
}

}  // namespace documents
