#include "document_pages_bench.h"

#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "driven_sheet.h"
#include "measure.h"
#include "plugin_pages.h"
#include "resources/resource.h"
#include "ui_driver.h"

namespace {

constexpr NamedControl kPages[] = {{"Main", IDC_MAIN_LANGUAGE_LABEL},
                                   {"Water Mark", IDC_WATERMARK_PREVIEW},
                                   {"Operation", IDC_OPERATION_PAGE_DOC_START},
                                   {"1D Code", k1DCode.unique},
                                   {"2D Code", k2DCode.unique},
                                   {"Version", IDC_VERSION_LINK}};

void Drive(PluginHost& host, const std::function<void(Sheet&)>& script) {
    Drive(host, SheetKind::kDocument, script);
}

// From the press of "Apply" to the last repaint, there and back again.
void MeasureLanguageSwitch(PluginHost& host) {
    std::vector<double> times;
    Drive(host, [&](Sheet& sheet) {
        const Window page = SelectPageWith(sheet, IDC_MAIN_LANGUAGE_LABEL);
        for (int i = 0; i < kRuns + 1; ++i) {
            page.SelectCombo(IDC_MAIN_LANGUAGE, i % 2 == 0 ? 1 : 0);
            const auto start = Clock::now();
            sheet.PressApply();
            RedrawWindow(sheet.handle(), nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
            times.push_back(Since(start));
        }
    });
    Report("language switched, Apply to last repaint (median)", Median(times));
}

void MeasurePreview(PluginHost& host, const char* kind, const OEMDEV& record) {
    host.record() = record;
    Drive(host, [&](Sheet& sheet) {
        const Window page = SelectPageWith(sheet, IDC_WATERMARK_PREVIEW);
        const std::string name = std::string("preview, ") + kind;
        int size = 30;
        Report((name + ": drawn anew (median)").c_str(), Measure(kPaints, [&] {
                   // The page reads the record whenever it paints.
                   host.record().iWaterMarkSize = static_cast<std::uint8_t>(++size % 60 + 30);
                   SendMessageW(page.handle(), WM_PAINT, 0, 0);
               }));
        Report((name + ": nothing changed (median)").c_str(), Repaint(page));
        if (record.iWaterMarkType == 1) {
            Report((name + ": file read again (median)").c_str(),
                   Measure(kRuns, [&] { page.Click(IDC_WATERMARK_USE_IMAGE); }));
        }
    });
}

void MeasurePreviews(PluginHost& host, const std::filesystem::path& bitmap) {
    const OEMDEV before = host.record();
    OEMDEV record = before;
    record.bPrintAsImage = 1;
    record.iWaterMarkType = 1;
    CopyText(record.WaterMarkPicName, bitmap.native());
    MeasurePreview(host, "image", record);
    record.iWaterMarkPosition = 9;
    MeasurePreview(host, "image tiled", record);
    record.iWaterMarkPosition = 4;
    record.iWaterMarkType = 2;
    CopyText(record.szWaterMarkText, L"CONFIDENTIAL");
    MeasurePreview(host, "text", record);
    host.record() = before;
}

// From the press of "Print" to the end of the job, into a virtual printer that keeps it in memory.
void MeasurePrints(PluginHost& host) {
    struct Print {
        const char* name;
        BarcodePage page;
        int type;
    };
    constexpr Print kPrints[] = {{"UPC-A", k1DCode, 0}, {"Code128", k1DCode, 8}, {"QR Code", k2DCode, 4}};
    Drive(host, [&](Sheet& sheet) {
        for (const Print& print : kPrints) {
            const Window page = SelectPageWith(sheet, print.page.unique);
            page.SelectCombo(print.page.types, print.type);
            const std::string name =
                std::string("test print, ") + print.name + ": press to end of job (median)";
            Report(name.c_str(), Measure(kRuns, [&] { page.Click(print.page.print); }));
        }
    });
}

}  // namespace

void MeasureDocumentPages(PluginHost& host, const std::filesystem::path& bitmap) {
    MeasurePages(host, SheetKind::kDocument, kPages);
    MeasureLanguageSwitch(host);
    MeasurePreviews(host, bitmap);
    MeasurePrints(host);
}

void MeasureFaces(PluginHost& host) {
    std::vector<double> times;
    std::size_t faces = 0;
    for (int i = 0; i < kRuns; ++i) {
        Drive(host, [&](Sheet& sheet) {
            const auto start = Clock::now();
            const Window page = SelectPageWith(sheet, IDC_WATERMARK_PREVIEW);
            times.push_back(Since(start));
            faces = page.ComboItems(IDC_WATERMARK_FONT).size();
        });
    }
    const std::string name = "Main and Water Mark pages shown, " + std::to_string(faces) + " faces (median)";
    Report(name.c_str(), Median(times));
}
