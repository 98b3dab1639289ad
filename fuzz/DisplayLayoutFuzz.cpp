// Shows bytes as Markdown while they grow and at several widths: whatever they are, blocks stand below each other, and
// a text that grew stands as if it were new.

#include "fuzz/Require.h"

#include "MarkdownUI/DisplayPainting.h"
#include "MarkdownUI/FrameListing.h"
#include "MarkdownUI/SelectionText.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>

#include <algorithm>

using namespace MarkdownUI;

namespace {

constexpr size_t kLongest = 600; // bytes
constexpr int kNarrowest = 50;
constexpr int kWidest = 600;

/// The application that fonts need, once for all inputs.
void makeApplication()
{
    static int count = 1;
    static char name[] = "fuzz";
    static char *arguments[] = {name, nullptr};
    static QApplication *const application = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QApplication(count, arguments);
    }();
    (void)application;
}

void requireSound(MarkdownDisplay &display)
{
    display.layOutAll();
    double bottom = 0;
    for (qsizetype leaf = 0; leaf < display.leafCount(); ++leaf) {
        const QRectF rect = display.leafRect(leaf);
        REQUIRE(rect.left() >= 0 && rect.right() <= display.width());
        REQUIRE(rect.top() >= bottom);
        bottom = rect.bottom();
        const qsizetype length = display.leafText(leaf).size();
        for (const QPointF &point : {rect.topLeft(), rect.center(), rect.bottomRight()}) {
            const DisplayPosition position = display.positionAt(point);
            REQUIRE(position == display.clamped(position));
        }
        REQUIRE(display.box(leaf).nextCharacter(length) <= length);
        REQUIRE(display.box(leaf).previousCharacter(0) >= 0);
        REQUIRE(display.targetCount(leaf) == display.box(leaf).targets().size());
    }
    REQUIRE(bottom <= display.height());
}

} // namespace

/// What the library of the system's fonts keeps until the process ends is not ours.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig\n";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    makeApplication();
    FuzzedDataProvider input(data, std::min(size, kLongest));
    const int width = input.ConsumeIntegralInRange(kNarrowest, kWidest);
    const auto part = input.ConsumeIntegral<uint8_t>();
    const QString markdown = QString::fromStdString(input.ConsumeRemainingBytesAsString());

    MarkdownDisplay grown;
    grown.setWidth(width);
    grown.setMarkdown(markdown.first(markdown.size() * part / 256));
    requireSound(grown);
    QImage image(width, 200, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    const DisplayRange all{{}, grown.endPosition()};
    paintDisplay(painter, grown, {}, QRectF(image.rect()), {.selection = all});
    grown.setMarkdown(markdown);
    requireSound(grown);

    MarkdownDisplay fresh;
    fresh.setWidth(width);
    fresh.setMarkdown(markdown);
    REQUIRE(frameListing(fresh) == frameListing(grown));
    plainTextOf(fresh, {{}, fresh.endPosition()});
    markdownOf(fresh, {{}, fresh.endPosition()});
    grown.setWidth(kNarrowest + kWidest - width);
    requireSound(grown);
    return 0;
}
