// SPDX-License-Identifier: Apache-2.0
#include "coaching_report.h"
#include "coaching_texts.h"
#include "dravik/lean_report.h"
#include "lean_evidence_texts.h"
#include "model_fixture.h"
#include "opening/session_reading.h"
#include "pair_feedback_texts.h"
#include "printed_photo.h"
#include "samplegen.h"

#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <cstdlib>
#include <fstream>
#include <map>

namespace tessary::test {

namespace {

using dravik::JointReviewState;

QString qText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

struct Finished {
    int status = -1;
    QString out;
    QString err;
};

Finished run(const QString& program, const QStringList& arguments,
             const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    process.waitForFinished(120'000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

// poppler's tools read what was written as any PDF reader would; without them there is nothing
// to read the file with.
bool havePoppler() {
    for (const char* tool : {"pdftotext", "pdftoppm", "pdfinfo", "pdfimages"})
        if (QStandardPaths::findExecutable(tool).isEmpty())
            return false;
    return true;
}

QString path(const fs::path& file) {
    return QString::fromStdString(file.string());
}

// The words of the PDF in the order they were set, lines joined as a reader joins them: a line
// broken after a hyphen goes on without a blank.
QString pdfWords(const fs::path& pdf) {
    return run("pdftotext", {"-raw", path(pdf), "-"}).out.replace("-\n", "-").simplified();
}

// Whether a pixel close to `centre` (within `radius` pixels) has about the colour `wanted`.
bool colourNear(const QImage& page, QPointF centre, int radius, const QColor& wanted) {
    for (int dy = -radius; dy <= radius; ++dy)
        for (int dx = -radius; dx <= radius; ++dx) {
            const QPoint at = centre.toPoint() + QPoint(dx, dy);
            if (!page.rect().contains(at))
                continue;
            const QColor seen = page.pixelColor(at);
            if (std::abs(seen.red() - wanted.red()) < 40 &&
                std::abs(seen.green() - wanted.green()) < 40 &&
                std::abs(seen.blue() - wanted.blue()) < 40)
                return true;
        }
    return false;
}

class ReportTest : public ModelTest {
  protected:
    // The sample with its companion files, reviewed as a coach would before printing: the inside
    // arm of both riders confirmed and comparable, the lean lines confirmed, checked and approved.
    SessionFiles reviewSample() {
        SessionFiles session = openBundled("session", true);
        model.setCompare(true);
        for (const std::string& frameID : {alex3, sam3}) {
            model.activate(frameID);
            for (const char* joint : {"left_shoulder", "left_elbow", "left_wrist"}) {
                model.setSelected(joint);
                model.setState(JointReviewState::confirmedVisible);
            }
            model.changeLean([](dravik::LeanAnnotation& lines) {
                lines.confirmWheel();
                lines.referenceReviewed = true;
            });
        }
        dravik::PairContext context = model.report()->context;
        context.viewComparability["leftElbow"] = dravik::ViewComparability::comparable;
        model.updateContext(context);
        dravik::LeanPairContext checks;
        checks.sameWheelCue = checks.cameraViewsComparable = checks.wheelHeadingsComparable =
            checks.referenceComparable = checks.cameraRollComparable = true;
        model.updateLeanContext(checks, true);
        EXPECT_EQ(model.error(), std::nullopt);
        EXPECT_FALSE(model.isUnsaved());
        return session;
    }

    ReportOptions a4() const { return {QPageSize(QPageSize::A4), QDate(2025, 5, 17)}; }
};

} // namespace

TEST_F(ReportTest, EveryPageSaysWhatThePanelsSayAndDrawsWhatTheCanvasDraws) {
    if (!havePoppler())
        GTEST_SKIP() << "poppler-utils (pdftotext, pdftoppm, pdfinfo, pdfimages) is not installed, "
                        "so the report cannot be read back.";
    const SessionFiles session = reviewSample();
    const ReportSession source = ReportSession::read(session.manifest, session.results);
    const std::vector<ReportSubject> everything =
        reportSubjects(*source.document, std::nullopt, std::nullopt);
    ASSERT_EQ(everything.size(), 2u);
    const RenderedReport rendered = renderCoachingReport(source, everything, a4());
    const fs::path pdf = temp.path() / "report.pdf";
    std::ofstream(pdf, std::ios::binary).write(rendered.pdf.constData(), rendered.pdf.size());
    if (const char* keep = std::getenv("TESSARY_REPORT_SAMPLE"))
        fs::copy_file(pdf, keep, fs::copy_options::overwrite_existing);

    // One page for the pair compared and one for the rider alone.
    ASSERT_EQ(rendered.pages(), 2u);
    EXPECT_TRUE(run("pdfinfo", {path(pdf)}).out.contains(QRegularExpression("Pages:\\s+2\\n")));
    EXPECT_TRUE(run("pdfinfo", {path(pdf)}).out.contains("(A4)"));

    const QString words = pdfWords(pdf);
    const dravik::PairReport& report = *model.report();
    const std::int64_t revision = model.document()->revision();
    QStringList expected = {
        "Sample session",
        "Turn 3 · Rider: Alex · Reference rider: Sam",
        "Turn 5 · Rider: Alex",
        "2025-05-17 · Revision " + QString::number(revision) + " · Saved locally · Evidence " +
            qText(report.shortDigest()),
        qText(texts::evidenceLine(report)),
        "Page 1 of 2",
        "Page 2 of 2",
        qText(texts::assumptionLine()),
        qText(texts::methodNote(report)),
        qText(texts::comparisonDetailsTitle(report)),
        qText(texts::differenceLine(report.observations.front().difference)),
        "Views: Comparable",
        qText(texts::leanComparisonLine(*model.leanReport())),
        qText(texts::approvalLine(*model.leanReport(),
                                  *model.document()->leanPairContext(report.pairID))),
        "☑ Same wheel cue",
        "☐ Similar speed — user reported",
        qText(texts::leanMeasurementLine(frameOf(alex3), model.leanReport()->frame(alex3))),
        // Every limitation, word for word.
        qText(dravik::PairReport::limitations()),
        qText(dravik::LeanAnalysis::limitations()),
        qText(texts::similarSpeedCaption),
        qText(texts::stillPhotoLimitation),
    };
    for (const dravik::CoachingBullet& bullet : report.coaching)
        expected << qText(texts::bulletHeadline(bullet)) << qText(bullet.detail);
    for (const std::string& observation : model.singlePhotoCoaching().at(alex5).observations)
        expected << qText(texts::observationLine(observation));
    ASSERT_FALSE(report.coaching.empty());
    ASSERT_TRUE(report.hasPhotoCoaching);
    for (const QString& text : expected)
        EXPECT_TRUE(words.contains(text.simplified())) << text.toStdString();

    // Page 1 drawn as a reader sees it: the wheel axis in the canvas's yellow and the reviewed
    // elbow's ring in its green, where the review has them.
    constexpr double dpi = 150;
    ASSERT_EQ(run("pdftoppm", {"-png", "-r", QString::number(dpi), "-f", "1", "-l", "1",
                               "-singlefile", path(pdf), path(temp.path() / "page")})
                  .status,
              0);
    const QImage page(path(temp.path() / "page.png"));
    ASSERT_FALSE(page.isNull());
    const auto onPage = [&](const std::string& frameID, const dravik::Point2& point) {
        for (const PrintedPhotoPlace& place : rendered.photos.front())
            if (place.frameID == frameID)
                return place.pagePoint(point) * (dpi / 72);
        ADD_FAILURE() << frameID << " is not on page 1";
        return QPointF();
    };
    for (const std::string& frameID : {alex3, sam3}) {
        const dravik::LeanLine wheel = *model.document()->leanAnnotation(frameID)->wheel;
        const dravik::Point2 quarter{wheel.a.x + (wheel.b.x - wheel.a.x) / 4,
                                     wheel.a.y + (wheel.b.y - wheel.a.y) / 4};
        EXPECT_TRUE(colourNear(page, onPage(frameID, quarter), 2, QColor(255, 204, 0))) << frameID;
        const dravik::Point2 elbow = *frameOf(frameID).reviewedPoint("left_elbow");
        // The ring is drawn 4 view points from the joint, about 2 points on paper.
        EXPECT_TRUE(colourNear(page, onPage(frameID, elbow), 6, QColor(52, 199, 89))) << frameID;
    }
}

TEST_F(ReportTest, APhotoIsPrintedAsJpegAtNoMoreThanPrintResolution) {
    if (!havePoppler())
        GTEST_SKIP() << "poppler-utils is not installed, so the report cannot be read back.";
    // A 12-megapixel photo, whose panel is several times what a page needs.
    const fs::path folder = temp.path() / "large";
    samplegen::Options large;
    large.photos = 1;
    large.megapixels = 12;
    samplegen::writeSession(folder, large);
    SessionRead read = readSession(folder / "session.json", folder / "results.json");
    const ReportSession session{folder / "session.json", folder / "results.json", "Large",
                                read.document,           read.companions,         read.proposals};
    const RenderedReport rendered = renderCoachingReport(
        session, reportSubjects(*session.document, std::nullopt, std::nullopt), a4());
    const fs::path pdf = temp.path() / "large.pdf";
    std::ofstream(pdf, std::ios::binary).write(rendered.pdf.constData(), rendered.pdf.size());

    const QStringList images =
        run("pdfimages", {"-list", path(pdf)}).out.split('\n', Qt::SkipEmptyParts).mid(2);
    ASSERT_EQ(images.size(), 1);
    const QStringList columns = images.front().simplified().split(' ');
    ASSERT_GE(columns.size(), 14) << images.front().toStdString();
    EXPECT_EQ(columns[8], "jpeg");
    EXPECT_GE(columns[12].toDouble(), printDpi - 2);
    EXPECT_LE(columns[12].toDouble(), printDpi + 1);
    EXPECT_LT(rendered.pdf.size(), 3 * 1024 * 1024);
}

} // namespace tessary::test

namespace tessary::test {

namespace {

// Every file under `folder` with its size and time, to see that nothing was written there.
std::map<std::string, std::pair<std::uintmax_t, fs::file_time_type>>
filesIn(const fs::path& folder) {
    std::map<std::string, std::pair<std::uintmax_t, fs::file_time_type>> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        files[fs::relative(entry.path(), folder).string()] = {
            entry.is_regular_file() ? entry.file_size() : 0, entry.last_write_time()};
    return files;
}

} // namespace

TEST_F(ReportTest, TheCommandWritesItsFileAloneWithoutADisplay) {
    const SessionFiles session = reviewSample();
    const fs::path home = temp.path() / "home";
    const fs::path out = temp.path() / "out";
    fs::create_directories(home);
    fs::create_directories(out);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "XDG_CACHE_HOME",
                             "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        environment.remove(name);
    environment.insert("HOME", path(home));
    const auto before = filesIn(session.folder);
    const auto report = [&](const QStringList& options) {
        return run(TESSARY_REPORT_PROGRAM,
                   QStringList{path(session.manifest), path(session.results)} + options,
                   environment);
    };

    const Finished written = report({"--frame", qText(alex5), "-o", path(out / "alex.pdf")});
    EXPECT_EQ(written.status, 0) << written.err.toStdString();
    EXPECT_TRUE(written.out.contains("1 page of review revision")) << written.out.toStdString();
    EXPECT_EQ(fs::file_size(out / "alex.pdf") > 0, true);
    EXPECT_EQ(filesIn(out).size(), 1u);
    EXPECT_TRUE(filesIn(home).empty());
    EXPECT_EQ(filesIn(session.folder), before);

    // Never over a file of the session; a pair that is not there is named.
    const std::string results = readText(session.results);
    const Finished refused = report({"-o", path(session.results)});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.contains("“results.json” is a file of the session"))
        << refused.err.toStdString();
    EXPECT_EQ(readText(session.results), results);
    const Finished unknown = report({"--pair", "turn-9", "-o", path(out / "none.pdf")});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.err, "The session has no pair “turn-9”.\n");
    EXPECT_FALSE(fs::exists(out / "none.pdf"));
}

} // namespace tessary::test
