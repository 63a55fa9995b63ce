// A rendered melody played from a sound file through the whole window: the keyboard lights
// the sung keys, the meters move, and the recording exports to a file that an independent
// reader reads back.
#include "WindowFixture.h"
#include "WindowMessages.h"

#include "Fixtures.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPainter>

#include <algorithm>
#include <chrono>
#include <set>

namespace vocato::test {

namespace {

// Inside the panel's default note range, 48 ... 72.
const std::vector<Note> kMelody = {
    {60, 0.3, 0.8}, {64, 0.95, 1.45}, {67, 1.6, 2.1}, {72, 2.25, 2.75}};

std::string WriteMelody(const TempDir& dir) {
    const std::string path = dir.File("melody.wav");
    WriteSoundFile(path, RenderMelody(kMelody, 68, 44100));
    return path;
}

bool Lit(QRgb pixel) {
    return pixel != qRgb(0, 0, 0);
}

} // namespace

class MelodyThroughPanel : public WindowTest {
protected:
    // Chooses the file, switches the source to it and records it to its end, watching the
    // panel all along.
    void RecordMelody() {
        Win().RefsReceived({QString::fromStdString(WriteMelody(dir_))});
        EXPECT_EQ(Win().View()->WaveFileName(), "melody.wav");
        Click({170, 110});
        ASSERT_FALSE(Win().PanelState().liveInput);
        ASSERT_TRUE(Win().View()->Button(ui::PanelButton::PlayWave)->isEnabled());

        Press(ui::PanelButton::RecMidi);
        EXPECT_EQ(Win().View()->Button(ui::PanelButton::PlayWave)->Value(), 1);
        EXPECT_FALSE(Win().View()->Button(ui::PanelButton::PlayWave)->isEnabled());
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(3400);
        bool shotTaken = false;
        while (std::chrono::steady_clock::now() < end) {
            Wait(30);
            const QImage shot = Shot();
            for (int note : LitNotes(shot)) {
                litNotes_.insert(note);
            }
            // The meters' middle columns, near the bottom of their bars.
            velocityMoved_ = velocityMoved_ || Lit(shot.pixel(415, 180));
            expressionMoved_ = expressionMoved_ || Lit(shot.pixel(385, 180));
            if (!shotTaken && litNotes_.count(67) != 0) {
                SaveScreenshot(Win(), "panel-playing");
                shotTaken = true;
            }
        }
        Press(ui::PanelButton::StopMidi);
    }

    // The notes whose keys are lit on the keyboard display, from the window's picture.
    std::vector<int> LitNotes(const QImage& shot) {
        if (litKeys_.empty()) {
            ResourceArtwork artwork;
            for (int octave = 0; octave < 7; ++octave) {
                for (int key = 1; key <= 12; ++key) {
                    QImage lit =
                        skin_.copy(OctaveArea(octave)).convertToFormat(QImage::Format_RGB32);
                    QPainter(&lit).drawImage(0, 0,
                                             artwork.Image(("c" + std::to_string(key)).c_str()));
                    litKeys_.push_back(lit);
                }
            }
        }
        std::vector<int> notes;
        for (int octave = 0; octave < 7; ++octave) {
            const QImage part = shot.copy(OctaveArea(octave));
            for (int key = 1; key <= 12; ++key) {
                if (part == litKeys_[size_t(octave * 12 + key - 1)]) {
                    notes.push_back(24 + 12 * octave + key - 1);
                }
            }
        }
        return notes;
    }
    static QRect OctaveArea(int octave) { return {60 + 74 * octave, 220, 74, 60}; }

    TempDir dir_;
    std::set<int> litNotes_;
    bool velocityMoved_ = false;
    bool expressionMoved_ = false;
    std::vector<QImage> litKeys_; // octave by octave, C to B, on the skin
};

// One recording: the panel while it plays, then an export that cannot be written and one
// that can.
TEST_F(MelodyThroughPanel, TheKeyboardLightsEachSungKeyAndTheRecordingExportsAndReadsBack) {
    RecordMelody();
    for (const Note& n : kMelody) {
        EXPECT_EQ(litNotes_.count(n.key), 1u) << "key " << n.key << " never lit";
    }
    EXPECT_TRUE(velocityMoved_);
    EXPECT_TRUE(expressionMoved_);
    EXPECT_TRUE(Win().View()->Button(ui::PanelButton::PlayWave)->isEnabled())
        << "after a stop the file can play again";

    Message save(kSaveRequested);
    save.AddString("directory", dir_.File("no-such-folder"));
    save.AddString("name", "melody.mid");
    app_->MessageReceived(save);
    Wait(20);
    const auto boxes = VisibleWindows<QMessageBox>();
    ASSERT_EQ(boxes.size(), 1u) << "the user is told";
    EXPECT_FALSE(boxes[0]->text().isEmpty());
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(dir_.File("no-such-folder/melody.mid"))));
    boxes[0]->close();

    Win().MessageReceived(Message(kExportMidi));
    ASSERT_TRUE(Win().SavePanel()->isVisible());
    const std::string out = dir_.File("melody.mid");
    Win().SavePanel()->selectFile(QString::fromStdString(out));
    static_cast<QDialog*>(Win().SavePanel())->accept();
    Wait(20);
    const std::vector<std::string> lines = ReadMidiWithMido(out);
    ASSERT_GE(lines.size(), 8u);
    EXPECT_EQ(lines[0], "0 500");
    EXPECT_EQ(lines[2], "0 c000") << "the recording opens with the piano of the panel";
    const std::vector<int> keys = KeysOf(lines, '9');
    auto at = keys.begin();
    for (const Note& n : kMelody) {
        at = std::find(at, keys.end(), n.key);
        EXPECT_NE(at, keys.end()) << "note " << n.key << " missing or out of order";
    }
}

TEST_F(MelodyThroughPanel, ATranspositionChosenOnThePanelMovesTheLitKeysAnOctaveUp) {
    Click({544 + 7, 165});
    EXPECT_FLOAT_EQ(Win().PanelState().transpose, 12);
    RecordMelody();
    for (const Note& n : kMelody) {
        EXPECT_EQ(litNotes_.count(n.key + 12), 1u) << "key " << n.key + 12 << " never lit";
        if (n.key != 72) { // 72 is also 60 transposed
            EXPECT_EQ(litNotes_.count(n.key), 0u) << "key " << n.key << " lit untransposed";
        }
    }
}

} // namespace vocato::test
