#include "nodes/fields/Lists.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "nodes/writer/TextStream.h"

namespace nodes {
namespace {

std::string textOf(const Field& field) {
    std::string out;
    return field.toText(out);
}

std::string written(const MField& list, std::string_view indent) {
    std::string out;
    StringStream stream(out);
    list.writeIndented(stream, indent, "\t");
    stream.finish();
    return out;
}

static_assert(sizeof(SFVec3f::Value) == 12);

TEST(Lists, AnItemIsTheValueInTheList) {
    MFVec3f list;
    list.add(1.0F, 2.0F, 3.0F);
    list.add(SFVec3f::Value{4, 5, 6});
    auto* const second = static_cast<SFVec3f*>(list.item(1));
    ASSERT_NE(nullptr, second);
    for (int i = 0; i < 1000; ++i) {
        list.add(7.0F, 8.0F, 9.0F);
    }
    EXPECT_EQ(second, list.item(1));
    second->set(-1, -2, -3);
    EXPECT_EQ((SFVec3f::Value{-1, -2, -3}), list.get(1));
    second->set(-4, -5, -6);
    EXPECT_EQ((SFVec3f::Value{-4, -5, -6}), list.values()[1]);
    second->set(0, 0, 7);
    MFVec3f copy;
    copy.assign(list);
    second->set(0, 0, 8);
    EXPECT_EQ(list.count(), copy.count());
    EXPECT_EQ((SFVec3f::Value{0, 0, 7}), copy.get(1));

    auto given = std::make_unique<SFVec3f>(1.0F, 1.0F, 1.0F);
    SFVec3f* const last = given.get();
    list.add(std::move(given));
    EXPECT_EQ(last, list.item(list.count() - 1));
    const int count = list.count();
    list.add(std::make_unique<SFColor>());
    list.add(std::unique_ptr<Field>());
    EXPECT_EQ(count, list.count());
    list.clear();
    EXPECT_EQ(nullptr, list.item(0));
    list.add(1.0F, 2.0F, 3.0F);
    EXPECT_EQ((SFVec3f::Value{1, 2, 3}), list.get(0));
}

TEST(Lists, HaveNothingOutsideTheirRange) {
    MFVec2f list;
    const float two[] = {1, 2};
    list.add(two);
    float out[] = {8, 9};
    for (const int i : {-1, 1}) {
        EXPECT_EQ(nullptr, list.item(i));
        list.get(i, out);
        EXPECT_EQ(8, out[0]);
        std::string text = "old";
        EXPECT_STREQ("", list.itemText(i, text));
        EXPECT_EQ(nullptr, MFString().get(i));
        EXPECT_EQ(0, MFInt32().get(i));
    }
    list.get(0, out);
    EXPECT_EQ(2, out[1]);
}

TEST(Lists, TakeNullTextsAndAxesOfAnyLength) {
    MFString texts;
    texts.add(static_cast<const char*>(nullptr));
    texts.add("b");
    EXPECT_STREQ("", texts.get(0));
    MFRotation rotations;
    const float axis[] = {0, 5, 0};
    rotations.add(axis, 1.0F);
    rotations.add(SFRotation::Value{0, 0, -3, 1});
    EXPECT_EQ("0 1 0 1, 0 0 -1 1", textOf(rotations));
}

TEST(Lists, AssignOnlyTheirOwnType) {
    MFInt32 integers;
    integers.add(1);
    integers.add(2);
    integers.assign(integers);
    SFImage image;
    image.add(3);
    MFFloat floats;
    floats.add(4.0F);
    integers.assign(image);
    integers.assign(floats);
    integers.assign(SFInt32(5));
    EXPECT_EQ("1, 2", textOf(integers));
    MFInt32 renamed;
    renamed.setTypeByName("MFFloat");
    floats.assign(renamed);
    EXPECT_EQ("4", textOf(floats));
}

TEST(Lists, ReadItemsFromText) {
    MFVec3f points;
    points.addFromText("1 2");
    points.addFromText("1 2 3");
    EXPECT_EQ("0 0 0, 1 2 3", textOf(points));
    MFColor colors;
    colors.addFromText(nullptr);
    EXPECT_EQ("1 1 1", textOf(colors));
    points.fromText(nullptr);
    EXPECT_EQ(2, points.count());
    points.fromText(" 4 5 6 ,7 8 9,\n");
    EXPECT_EQ("4 5 6, 7 8 9", textOf(points));
    points.fromText(" ");
    EXPECT_EQ(0, points.count());

    MFString texts;
    texts.fromText("\"a, b\" , c d ,, \"open");
    EXPECT_EQ(4, texts.count());
    EXPECT_STREQ("a, b", texts.get(0));
    EXPECT_STREQ("c d", texts.get(1));
    EXPECT_STREQ("", texts.get(2));
    EXPECT_STREQ("open", texts.get(3));
    texts.fromText(texts.get(0));
    EXPECT_EQ("a, b", textOf(texts));
    EXPECT_EQ(2, texts.count());
}

TEST(Lists, PrintWholeItemsAlone) {
    MFFloat list;
    char buffer[8] = "xyz";
    EXPECT_STREQ("xyz", list.print(buffer, 0));
    EXPECT_STREQ("", list.print(buffer, 1));
    list.add(1.5F);
    list.add(22.0F);
    EXPECT_STREQ("1.5", list.print(buffer, 7));
    EXPECT_STREQ("1.5, 22", list.print(buffer, 8));
    EXPECT_STREQ("", list.print(buffer, 3));
    for (int i = 0; i < 1000; ++i) {
        list.add(1.0F);
    }
    EXPECT_EQ(std::string("1.5, 22").size() + 3000, textOf(list).size());
    EXPECT_EQ(4, MFRotation().componentCount());
}

TEST(Lists, WriteOneItemALine) {
    MFVec3f points;
    EXPECT_EQ("", written(points, "  "));
    points.add(1.0F, 2.0F, 3.0F);
    EXPECT_EQ("  \t1 2 3\n", written(points, "  "));
    points.add(0.5F, -1e-7F, 4.0F);
    EXPECT_EQ("\t1 2 3,\n\t0.5 -1e-07 4\n", written(points, ""));
    MFString texts;
    texts.add("a\"b");
    texts.add(static_cast<const char*>(nullptr));
    EXPECT_EQ("\t\"a\"b\",\n\t\"\"\n", written(texts, ""));
    MFTime times;
    times.add(0.5);
    EXPECT_EQ("\t0.5\n", written(times, ""));
}

TEST(Lists, ImagesWriteThirtyThreeIntegersALine) {
    std::string line = "\t";
    SFImage image;
    for (int i = 0; i < 33; ++i) {
        image.add(i);
        line += std::to_string(i) + " ";
    }
    EXPECT_EQ(line + "\n\t\n", written(image, ""));
    image.add(33);
    EXPECT_EQ(line + "\n\t33 \n", written(image, ""));
}

/// Takes its first piece alone.
class FullStream final : public TextStream {
  public:
    int pieces() const { return m_pieces; }
    bool full() const override { return m_pieces > 0; }

  protected:
    void take(const char*, std::size_t) override { ++m_pieces; }

  private:
    int m_pieces = 0;
};

TEST(TextStreams, HandOnAllTextAndStopWhereItIsLost) {
    std::string out;
    StringStream stream(out);
    std::string expected;
    const std::string large(200'000, 'x');
    for (int i = 0; i < 30'000; ++i) {
        stream.put("ab");
        stream.put(-i);
        stream.put(1.0 / 3);
        expected += "ab" + std::to_string(-i) + "0.333333";
    }
    stream.put(std::string_view(large));
    stream.putTabs(150'000);
    stream.put('.');
    stream.finish();
    expected += large + std::string(150'000, '\t') + ".";
    EXPECT_EQ(expected, out);

    MFFloat list;
    for (int i = 0; i < 1'000'000; ++i) {
        list.add(1.0F);
    }
    FullStream full;
    list.write(full, "");
    EXPECT_EQ(1, full.pieces());
}

}  // namespace
}  // namespace nodes
