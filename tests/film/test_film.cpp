#include "syncs.h"
#include "testunit.h"

#include "film/avirepair.h"
#include "film/firstframe.h"
#include "film/picturefile.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QMap>
#include <QTest>
#include <QtEndian>

#include <gst/gst.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kPictures = 61;

quint32 numberAt(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}

QByteArray number(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// A little picture whose header tells of another size.
QByteArray pictureThatSays(QSize size, const QByteArray &format = "jpg", bool inPasses = false)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(Qt::red);
    QImageWriter writer(&buffer, format);
    writer.setProgressiveScanWrite(inPasses);
    writer.write(image);
    if (const qsizetype frame = bytes.indexOf(inPasses ? "\xff\xc2" : "\xff\xc0"); frame > 0) {
        qToBigEndian(quint16(size.height()), bytes.data() + frame + 5);
        qToBigEndian(quint16(size.width()), bytes.data() + frame + 7);
    }
    return bytes;
}

// Sizes and checksums of the packets of each stream, by a tool that is not ours.
QMap<QByteArray, QByteArrayList> packetsOf(const QString &path)
{
    QMap<QByteArray, QByteArrayList> packets;
    const auto lines = output("ffmpeg -v quiet -i %1 -map 0 -c copy -f framecrc -", {path}).split('\n');
    for (const QByteArray &line : lines) {
        const QByteArrayList fields = line.split(',');
        if (fields.size() >= 6 && !line.startsWith('#'))
            packets[fields[0]] << fields[4] + fields[5];
    }
    return packets;
}

// The place to which the demuxer of the unit's own player goes; negative when it does not.
double seekTo(const QString &path, double second)
{
    GstElement *pipeline = gst_parse_launch(
        qPrintable(u"filesrc location=%1 ! avidemux name=d d.video_0 ! fakesink name=sink"_s.arg(path)),
        nullptr);
    gst_element_set_state(pipeline, GST_STATE_PAUSED);
    gst_element_get_state(pipeline, nullptr, nullptr, 5 * GST_SECOND);
    const bool sought = gst_element_seek_simple(pipeline, GST_FORMAT_TIME,
                                                GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                                                gint64(second * GST_SECOND));
    gst_element_get_state(pipeline, nullptr, nullptr, 5 * GST_SECOND);
    gint64 place = -1;
    gst_element_query_position(pipeline, GST_FORMAT_TIME, &place);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    return sought ? double(place) / GST_SECOND : -1;
}

// A film as the recording layouts make it; killed right after the start, or closed in order.
QByteArray record(const QString &path, bool withSound, bool killed)
{
    QString launch = u"videotestsrc num-buffers=%1 ! video/x-raw,width=320,height=240,framerate=15/1 ! "
                     "jpegenc ! queue ! avimux name=mux ! filesink location=%2 buffer-mode=unbuffered "_s.arg(
                         QString::number(killed ? -1 : kPictures), path);
    if (withSound) {
        launch += u"audiotestsrc num-buffers=%1 ! audio/x-raw,rate=44100,channels=1 ! lamemp3enc ! "
                  "mpegaudioparse ! queue ! mux."_s.arg(killed ? -1 : 175);
    }
    GstElement *pipeline = gst_parse_launch(qPrintable(launch), nullptr);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    QByteArray start;
    if (killed) {
        (void)QTest::qWaitFor([&] { return (start = content(path)).size() >= 10000; }, 30000);
    } else {
        GstBus *bus = gst_element_get_bus(pipeline);
        gst_message_unref(gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE, GST_MESSAGE_EOS));
        gst_object_unref(bus);
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    return killed ? start : content(path);
}

struct Chunk
{
    qsizetype at;
    qsizetype end;
};

// The packets' list and what it holds, as a kill leaves them: start values in the headers, no index.
struct CutFilm
{
    QByteArray bytes;
    QList<Chunk> packets;

    CutFilm(const QByteArray &whole, const QByteArray &start)
    {
        const qsizetype packetsAt = start.indexOf("movi") + 4;
        const qsizetype index = whole.lastIndexOf("idx1");
        bytes = start.first(packetsAt) + whole.sliced(packetsAt, index - packetsAt);
        for (qsizetype at = packetsAt; at < bytes.size();) {
            const qsizetype end = at + 8 + numberAt(bytes, at + 4);
            packets << Chunk{at, end};
            at = end + (end & 1);
        }
    }

    QByteArray indexOf(const char *name, const char *stream, qsizetype count) const
    {
        QByteArray entries;
        for (const Chunk &packet : packets.first(count)) {
            if (bytes.sliced(packet.at).startsWith(stream))
                entries += number(quint32(packet.at + 8)) + number(numberAt(bytes, packet.at + 4));
        }
        return name + number(quint32(24 + entries.size())) + number(0x01000002) +
               number(quint32(entries.size() / 8)) + stream + QByteArray(12, '\0') + entries;
    }

    // Half of the packets in a part of its own, as it is done behind each gigabyte.
    QByteArray inTwoParts() const
    {
        const qsizetype half = packets.size() / 2;
        const qsizetype cut = packets[half].at;
        QByteArray first = bytes.first(cut) + indexOf("ix00", "00db", half) + indexOf("ix01", "01wb", half);
        first += "idx1" + number(quint32(16 * half));
        for (const Chunk &packet : packets.first(half)) {
            first += bytes.sliced(packet.at, 4) + number(0x12) + number(quint32(packet.at)) +
                     number(numberAt(bytes, packet.at + 4));
        }
        return first + "RIFF" + number(12) + "AVIXLIST" + number(0) + "movi" + bytes.sliced(cut);
    }
};

} // namespace

class TestFilm : public HeardTest
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QString m_path;
    QMap<QByteArray, QByteArrayList> m_packets[2]; // of the films in wholeFilm()
    QByteArray m_start[2];                         // of a film without and with sound, right after its start

    QString wholeFilm(bool withSound) const
    {
        return m_folder.filePath(withSound ? u"sound.avi"_s : u"silent.avi"_s);
    }

    CutFilm cutFilm(bool withSound) { return {content(wholeFilm(withSound)), m_start[withSound]}; }

    void compareAfterRepair(const QByteArray &cut, qsizetype pictures, bool withSound = true)
    {
        put(m_path, cut);
        const auto before = m_packets[withSound];
        const QDateTime modified = QDateTime::fromSecsSinceEpoch(1700000001);
        {
            QFile file(m_path);
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
        }
        QVERIFY(avirepair::isCutOff(onHost(m_path)));
        takeSyncs();
        QVERIFY(avirepair::repair(onHost(m_path)));
        QVERIFY(takeSyncs().size() >= 3); // packets, headers, and the first size at the very end
        QCOMPARE(QFileInfo(m_path).lastModified(), modified);

        const auto after = packetsOf(m_path);
        QCOMPARE(after["0"].size(), pictures);
        for (auto stream = after.begin(); stream != after.end(); ++stream)
            QCOMPARE(before[stream.key()].first(stream->size()), *stream);
        QVERIFY(std::abs(duration(m_path, "v:0") - double(pictures) / 15) < 0.01);
        QCOMPARE(after.contains("1"), withSound);
        if (withSound)
            QVERIFY(std::abs(duration(m_path, "a:0") - double(after["1"].size()) * 1152 / 44100) < 0.05);
        QCOMPARE(faultsOf(m_path), QByteArray());
        QVERIFY(std::abs(seekTo(m_path, 1.0) - 1.0) < 0.1);

        const QByteArray repaired = content(m_path);
        QVERIFY(!avirepair::isCutOff(onHost(m_path)));
        QVERIFY(!avirepair::repair(onHost(m_path)));
        QCOMPARE(content(m_path), repaired);
    }

private slots:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        m_path = m_folder.filePath(u"film.avi"_s);
        for (const bool withSound : {false, true}) {
            m_start[withSound] = record(m_folder.filePath(u"start.avi"_s), withSound, true);
            record(wholeFilm(withSound), withSound, false);
            m_packets[withSound] = packetsOf(wholeFilm(withSound));
        }
    }

    void aCutFilmBecomesTheFilmItWouldHaveBeen_data()
    {
        QTest::addColumn<bool>("withSound");
        QTest::newRow("with sound") << true;
        QTest::newRow("without sound") << false;
    }
    void aCutFilmBecomesTheFilmItWouldHaveBeen()
    {
        QFETCH(const bool, withSound);
        const CutFilm film = cutFilm(withSound);
        compareAfterRepair(film.bytes, kPictures, withSound);
        QByteArray expected = content(wholeFilm(withSound));
        QByteArray repaired = content(m_path);
        for (QByteArray *bytes : {&expected, &repaired}) {
            bytes->replace(0x24, 4, "rate"); // bytes a second: an estimate
            if (withSound)
                bytes->replace(0x328, 4, "long"); // the sound's packets, or one less
        }
        QVERIFY(expected == repaired);
    }

    void whereverItIsCut()
    {
        const CutFilm film = cutFilm(true);
        QVERIFY(film.bytes.sliced(film.packets.last().at).startsWith("00db"));
        const QByteArray index("idx1\x00\x10\x00\x00"
                               "00db",
                               12);
        compareAfterRepair(film.bytes.chopped(1000), kPictures - 1); // the last picture
        compareAfterRepair(film.bytes.chopped(1000) + QByteArray(1000, '\0'),
                           kPictures - 1); // its length alone
        compareAfterRepair(film.bytes + QByteArray(9000, '\0'), kPictures);
        compareAfterRepair(film.bytes + index, kPictures);
        compareAfterRepair(film.bytes + QByteArray("00db\x05", 5), kPictures); // the next head
        const QByteArray parts = film.inTwoParts();
        compareAfterRepair(parts, kPictures);
        compareAfterRepair(parts.chopped(1000), kPictures - 1);
        qsizetype pictures = 0;
        for (const Chunk &packet : film.packets.first(film.packets.size() / 2))
            pictures += film.bytes.sliced(packet.at).startsWith("00db");
        compareAfterRepair(parts.first(parts.indexOf("AVIX") + 16), pictures); // a part without a packet
        compareAfterRepair(parts.first(parts.indexOf("ix01") + 50), pictures); // a torn index
    }

    void aFilmBeyondTwoGibibytesOpens()
    {
        const QTemporaryDir folder;
        const QString film = folder.filePath(u"long.avi"_s);
        record(film, true, false);
        QVERIFY(QFile::resize(film, qint64(3) << 30)); // sparse
        QVERIFY(!avirepair::repair(onHost(film)));     // more behind it than a tear
        QVERIFY(!firstFrameOfFilm(onHost(film)).isNull());
        QVERIFY(seekTo(film, 2) > 1.9);
    }

    void whatIsNoCutFilmOfOursStaysAsItIs()
    {
        const CutFilm film = cutFilm(true);
        const QByteArray whole = content(wholeFilm(true));
        const qsizetype packets = film.packets.first().at;
        QByteArray noPictures = film.bytes;
        noPictures.replace(0x70, 4, "DIVX");
        // On a 32-bit board this size leads back to the chunk itself.
        const QByteArray endless =
            film.bytes.first(packets - 12) + "JUNK" + number(0xfffffff8) + QByteArray(99, 'x');
        for (const QByteArray &bytes :
             {whole, QByteArray(), QByteArray("RIFF"), QByteArray(100000, 'x'), film.bytes.first(300),
              film.bytes.first(packets), film.bytes.first(packets) + QByteArray(5000, '\xff'), noPictures,
              endless, film.bytes + QByteArray(65 * 1024 * 1024, 'x')}) {
            put(m_path, bytes);
            QVERIFY(!avirepair::repair(onHost(m_path)));
            QVERIFY(content(m_path) == bytes);
        }
        QVERIFY(!avirepair::isCutOff(onHost(m_folder.filePath(u"none.avi"_s))));
    }

    void aPictureIsReadOnlyWhenTheUnitCanAffordIt_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("isRead");
        QTest::newRow("64 megapixels") << pictureThatSays({8000, 8000}) << true;
        QTest::newRow("900 megapixels") << pictureThatSays({30000, 30000}) << false;
        QTest::newRow("12 megapixels in passes") << pictureThatSays({4000, 3000}, "jpg", true) << true;
        QTest::newRow("25 megapixels in passes") << pictureThatSays({5000, 5000}, "jpg", true) << false;
        QByteArray passes = pictureThatSays({16, 16}, "jpg", true);
        const qsizetype last = passes.lastIndexOf("\xff\xda");
        passes.insert(last, passes.sliced(last, passes.size() - last - 2).repeated(200));
        QTest::newRow("small, in 200 passes") << passes << false;
        QTest::newRow("a line") << pictureThatSays({1, 65000}) << true;
        QTest::newRow("of no height") << pictureThatSays({100, 0}) << false;
        QTest::newRow("torn header") << pictureThatSays({16, 16}).first(170) << false;
        QTest::newRow("another kind under this name") << pictureThatSays({16, 16}, "png") << false;
    }
    void aPictureIsReadOnlyWhenTheUnitCanAffordIt()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const bool, isRead);
        put(m_path, bytes);
        constexpr QSize box(1440, 1200);
        const QImage large = readPicture(onHost(m_path), box);
        const QImage small = readSmallPicture(onHost(m_path), 128);
        QCOMPARE(!large.isNull(), isRead);
        QCOMPARE(!small.isNull(), isRead);
        QVERIFY(large.width() <= box.width() && large.height() <= box.height());
        QVERIFY(small.width() <= 128 && small.height() <= 1024);
    }

    void aFilmOfLargePicturesIsNotOpened()
    {
        QCOMPARE(
            output("ffmpeg -v error -y -f lavfi -i color=s=5000x4000 -frames:v 1 -c:v mjpeg %1", {m_path}),
            QByteArray());
        QVERIFY(firstFrameOfFilm(onHost(m_path)).isNull());
    }
};

QTEST_GUILESS_MAIN(TestFilm)
#include "test_film.moc"
