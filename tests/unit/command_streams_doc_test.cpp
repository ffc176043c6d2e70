// docs/command-streams.md against the code: its examples are what is sent, and its list of commands explains
// every byte of every stream, with nothing in it that is never sent.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "devmode/devmode_record.h"
#include "document_tables.h"
#include "logo_pictures.h"
#include "platform_recorder.h"
#include "printer/barcode_commands.h"
#include "printer/logo_raster.h"
#include "printer/printer_commands.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

bool IsHexadecimal(const std::string& word) {
    return word.size() == 2 && word.find_first_not_of("0123456789ABCDEF") == std::string::npos;
}

std::vector<std::string> WordsOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// "1B 63 / 00": two pieces.
CommandPieces PiecesOf(const std::string& text) {
    CommandPieces pieces(1);
    for (const std::string& word : WordsOf(text)) {
        if (word == "/") {
            pieces.emplace_back();
        } else {
            EXPECT_TRUE(IsHexadecimal(word)) << text;
            pieces.back().push_back(static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
        }
    }
    return pieces;
}

Bytes BytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string Narrow(const Char16* text) {
    const StringView16 view(text);
    return {view.begin(), view.end()};
}

class CommandStreamsDocument : public PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        SetDefaultOEMDev(&record_);
    }

    std::vector<documents::Row> Rows(const std::string& heading) const {
        const std::vector<documents::Row> rows = documents::Find(sections_, heading).rows;
        EXPECT_FALSE(rows.empty()) << heading;
        return rows;
    }

    std::vector<std::string> Block(const std::string& heading) const {
        const std::vector<std::string> lines = documents::Find(sections_, heading).lines;
        EXPECT_FALSE(lines.empty()) << heading;
        return lines;
    }

    CommandPieces Column(const std::string& heading, std::size_t column) const {
        CommandPieces pieces;
        for (const documents::Row& row : Rows(heading)) {
            pieces.push_back(PiecesOf(row.at(column)).front());
        }
        return pieces;
    }

    // Rows of bytes and how often they come.
    Bytes Repeated(const std::string& heading) const {
        Bytes all;
        for (const documents::Row& row : Rows(heading)) {
            const Bytes bytes = PiecesOf(row.at(0)).front();
            for (unsigned long times = std::stoul(row.at(1)); times > 0; --times) {
                all.insert(all.end(), bytes.begin(), bytes.end());
            }
        }
        return all;
    }

    std::vector<documents::Section> sections_ = documents::Read("command-streams.md");
    OEMDEV record_{};
};

TEST_F(CommandStreamsDocument, SelfTestAndClearing) {
    EXPECT_EQ(Column("Self test", 1), SelfTestCommand());
    EXPECT_EQ(Column("Logos cleared", 1), ClearLogosCommand());
}

TEST_F(CommandStreamsDocument, LogosBeginAndEnd) {
    for (const LogoRaster raster : {LogoRaster::kMono, LogoRaster::kGrey}) {
        CommandPieces sent = LogosBegin(raster, 1);
        const CommandPieces end = LogosEnd();
        CommandPieces written;
        for (const documents::Row& row : Rows("Logos")) {
            const std::string& cell = row.at(raster == LogoRaster::kMono ? 1 : 2);
            if (cell != "its raster") {
                written.push_back(PiecesOf(cell).front());
            }
        }
        sent.insert(sent.end(), end.begin(), end.end());
        EXPECT_EQ(written, sent);
    }
}

TEST_F(CommandStreamsDocument, TestPrints) {
    std::vector<std::string> types;
    for (const documents::Row& row : Rows("Test prints")) {
        if (row.size() == 2) {
            continue;  // the packed Code128 below
        }
        CommandPieces written = PiecesOf(row.at(1));
        const Bytes data = BytesOf(row.at(2));
        written.insert(written.end(), {data, {0x00}, {0x0A, 0x1D, 0x56, 0x42, 0x00}});
        for (std::uint8_t type = 0; type < std::size(kBarcodeTypes1D); ++type) {
            if (Narrow(kBarcodeTypes1D[type].name) == row.at(0)) {
                BarcodeFont1D font = record_.Barcode1D[0];
                font.bType = type;
                EXPECT_EQ(Narrow(SampleOf(font)), row.at(2));
                Bytes checked = data;
                EXPECT_TRUE(AcceptsTestData(font, checked)) << row.at(0);
                EXPECT_EQ(TestPrint(font, checked), written) << row.at(0);
            }
        }
        for (std::uint8_t type = 0; type < std::size(kBarcodeNames2D); ++type) {
            if (Narrow(kBarcodeNames2D[type]) == row.at(0)) {
                BarcodeFont2D font = record_.Barcode2D[0];
                font.bType2D = type;
                EXPECT_EQ(Narrow(kBarcodeSample2D), row.at(2));
                EXPECT_EQ(TestPrint(font, data), written) << row.at(0);
            }
        }
        types.push_back(row.at(0));
    }
    std::vector<std::string> all;
    for (const BarcodeType1D& type : kBarcodeTypes1D) {
        all.push_back(Narrow(type.name));
    }
    for (const Char16* name : kBarcodeNames2D) {
        all.push_back(Narrow(name));
    }
    EXPECT_EQ(types, all);
}

TEST_F(CommandStreamsDocument, PackedCode128) {
    BarcodeFont1D font = record_.Barcode1D[0];
    font.bType = 8;
    int examples = 0;
    for (const documents::Row& row : Rows("Test prints")) {
        if (row.size() == 2) {
            Bytes data = BytesOf(row[0]);
            EXPECT_TRUE(AcceptsTestData(font, data)) << row[0];
            EXPECT_EQ(data, PiecesOf(row[1]).front()) << row[0];
            ++examples;
        }
    }
    EXPECT_GT(examples, 0);
}

TEST_F(CommandStreamsDocument, BlackAndWhiteRaster) {
    const std::string heading = "A black-and-white raster";
    const std::vector<std::string> picture = Block(heading);
    const std::size_t width = picture.at(0).size();
    ASSERT_LE(width, 8u);
    Bytes file =
        pictures::Front(static_cast<std::int32_t>(width), static_cast<std::int32_t>(picture.size()), 1);
    const Bytes palette = {0, 0, 0, 0, 255, 255, 255, 0};
    std::copy(palette.begin(), palette.end(), file.begin() + 54);
    for (auto line = picture.rbegin(); line != picture.rend(); ++line) {
        unsigned row = 0xFF;
        for (std::size_t x = 0; x < width; ++x) {
            row ^= line->at(x) == '#' ? 0x80u >> x : 0u;
        }
        file.insert(file.end(), {static_cast<std::uint8_t>(row), 0xFF, 0xFF, 0xFF});
    }
    Bytes raster;
    EXPECT_TRUE(MonoRasterOf(file, false, raster));
    EXPECT_EQ(raster, Repeated(heading));
}

TEST_F(CommandStreamsDocument, GreyRaster) {
    const std::string heading = "A grey raster";
    const std::vector<std::string> picture = Block(heading);
    constexpr std::size_t kWidth = 4;
    Bytes file = pictures::Front(kWidth, static_cast<std::int32_t>(picture.size()), 8);
    for (auto line = picture.rbegin(); line != picture.rend(); ++line) {
        const std::vector<std::string> levels = WordsOf(*line);
        ASSERT_EQ(levels.size(), kWidth);
        for (const std::string& level : levels) {
            file.push_back(static_cast<std::uint8_t>(std::stoul(level)));
        }
    }
    Bytes raster;
    EXPECT_TRUE(GreyRasterOf(file, raster));
    EXPECT_EQ(raster, Repeated(heading));
}

// One row of the list of commands.
struct Pattern {
    std::vector<std::string> words;
    bool isUsed = false;

    std::size_t Fixed() const {
        return static_cast<std::size_t>(std::count_if(words.begin(), words.end(), IsHexadecimal));
    }
    bool Fits(const Bytes& bytes, std::size_t at) const {
        if (bytes.size() - at < words.size()) {
            return false;
        }
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (IsHexadecimal(words[i]) && std::stoul(words[i], nullptr, 16) != bytes[at + i]) {
                return false;
            }
        }
        return true;
    }
};

// Takes `bytes` apart by the patterns; what is fixed most counts. Gives what is left where none fits.
Bytes Unexplained(std::vector<Pattern>& patterns, const Bytes& bytes) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        Pattern* best = nullptr;
        for (Pattern& pattern : patterns) {
            if (pattern.Fits(bytes, at) && (best == nullptr || pattern.Fixed() > best->Fixed())) {
                best = &pattern;
            }
        }
        if (best == nullptr) {
            break;
        }
        best->isUsed = true;
        at += best->words.size();
    }
    return {bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end()};
}

TEST_F(CommandStreamsDocument, ListsEveryCommand) {
    std::vector<Pattern> patterns;
    for (const documents::Row& row : Rows("Commands")) {
        patterns.push_back({WordsOf(row.at(0))});
    }
    // The data of a test print is no command: one byte that none begins with.
    const Bytes data = {'7'};
    std::vector<CommandPieces> streams = {SelfTestCommand(), ClearLogosCommand(),
                                          LogosBegin(LogoRaster::kMono, 9), LogosBegin(LogoRaster::kGrey, 9),
                                          LogosEnd()};
    // A zero that a row forgets would pass for the end of data.
    record_.Barcode1D[0].bHriFont = 1;
    record_.Barcode1D[0].bHriPosition = 3;
    record_.Barcode2D[0].bQrLanguage = 1;
    for (std::uint8_t type = 0; type < std::size(kBarcodeTypes1D); ++type) {
        record_.Barcode1D[0].bType = type;
        streams.push_back(TestPrint(record_.Barcode1D[0], data));
    }
    for (std::uint8_t type = 0; type < std::size(kBarcodeNames2D); ++type) {
        record_.Barcode2D[0].bType2D = type;
        streams.push_back(TestPrint(record_.Barcode2D[0], data));
    }
    for (const CommandPieces& stream : streams) {
        Bytes bytes;
        for (const Bytes& piece : stream) {
            if (piece != data) {
                bytes.insert(bytes.end(), piece.begin(), piece.end());
            }
        }
        EXPECT_EQ(Unexplained(patterns, bytes), Bytes()) << testing::PrintToString(bytes);
    }
    for (const Pattern& pattern : patterns) {
        EXPECT_TRUE(pattern.isUsed) << testing::PrintToString(pattern.words);
    }
}

}  // namespace
