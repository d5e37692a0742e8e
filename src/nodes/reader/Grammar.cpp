#include "nodes/reader/Grammar.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include "nodes/nodes/NodeClasses.h"

namespace nodes {
namespace {

/// The form in which a file holds the value of a field class.
template <class Type>
constexpr ValueForm kFormOf = ValueForm::kNode;
template <>
constexpr ValueForm kFormOf<SFBool> = ValueForm::kBool;
template <>
constexpr ValueForm kFormOf<SFInt32> = ValueForm::kInt;
template <>
constexpr ValueForm kFormOf<SFFloat> = ValueForm::kFloat;
template <>
constexpr ValueForm kFormOf<SFTime> = ValueForm::kTime;
template <>
constexpr ValueForm kFormOf<SFString> = ValueForm::kString;
template <>
constexpr ValueForm kFormOf<SFVec2f> = ValueForm::kVec2;
template <>
constexpr ValueForm kFormOf<SFVec3f> = ValueForm::kVec3;
template <>
constexpr ValueForm kFormOf<SFColor> = ValueForm::kColor;
template <>
constexpr ValueForm kFormOf<SFRotation> = ValueForm::kRotation;
template <>
constexpr ValueForm kFormOf<MFInt32> = ValueForm::kInts;
template <>
constexpr ValueForm kFormOf<MFFloat> = ValueForm::kFloats;
template <>
constexpr ValueForm kFormOf<MFTime> = ValueForm::kFloats;
template <>
constexpr ValueForm kFormOf<MFString> = ValueForm::kStrings;
template <>
constexpr ValueForm kFormOf<MFVec2f> = ValueForm::kVec2s;
template <>
constexpr ValueForm kFormOf<MFVec3f> = ValueForm::kVec3s;
template <>
constexpr ValueForm kFormOf<MFColor> = ValueForm::kColors;
template <>
constexpr ValueForm kFormOf<MFRotation> = ValueForm::kRotations;
template <>
constexpr ValueForm kFormOf<SFImage> = ValueForm::kImage;

constexpr bool kMayRepeat = false;
constexpr bool kStandsOnce = true;

#define VALUE_ROW(Name, keyword, member, isSingle)                                            \
    {k##Name,                                                                                 \
     FieldKeyword::keyword,                                                                   \
     kFormOf<std::remove_reference_t<decltype(std::declval<Name##Node&>().member##Field())>>, \
     [](Node& node) -> Field& { return static_cast<Name##Node&>(node).member##Field(); },     \
     0,                                                                                       \
     false,                                                                                   \
     isSingle},
#define NODE_ROW(Name, keyword, form, acceptsNull, types) \
    {k##Name, FieldKeyword::keyword, ValueForm::form, nullptr, types, acceptsNull, kMayRepeat},

constexpr GrammarRow kRows[] = {
#define ITEM(Name, keyword, member) VALUE_ROW(Name, keyword, member, kMayRepeat)
#define ONCE(Name, keyword, member) VALUE_ROW(Name, keyword, member, kStandsOnce)
#define DROPPED(Name, keyword, form) NODE_ROW(Name, keyword, form, false, 0)
#define NODE(Name, keyword, ...) NODE_ROW(Name, keyword, kNode, true, setOf({__VA_ARGS__}))
#define CHILD(Name, keyword) NODE_ROW(Name, keyword, kNode, true, kChildTypes)
#define CHILDREN(Name, keyword) NODE_ROW(Name, keyword, kNodes, false, kChildTypes)
#define SCRIPT(keyword, form) NODE_ROW(Script, keyword, form, false, 0)
#include "nodes/reader/Grammar.def"
};

#undef VALUE_ROW
#undef NODE_ROW

/// Row numbers plus one by node type and keyword.
struct RowIndex {
    std::array<std::array<std::uint16_t, kFieldKeywordCount>, kNodeClassCount> numbers{};

    constexpr RowIndex() {
        for (std::size_t row = 0; row < std::size(kRows); ++row) {
            std::uint16_t& number = numbers[static_cast<std::size_t>(kRows[row].node)]
                                           [static_cast<std::size_t>(kRows[row].keyword)];
            number = static_cast<std::uint16_t>(row + 1);
        }
    }
};
constexpr RowIndex kRowIndex;

template <class Type, FieldType kType>
constexpr ScriptType scriptType() {
    return {kType, kFormOf<Type>,
            []() -> std::unique_ptr<Field> { return std::make_unique<Type>(); }};
}

constexpr ScriptType kScriptTypes[] = {
    scriptType<SFBool, kSFBool>(),         scriptType<SFFloat, kSFFloat>(),
    scriptType<SFInt32, kSFInt32>(),       scriptType<SFTime, kSFTime>(),
    scriptType<SFRotation, kSFRotation>(), scriptType<SFColor, kSFColor>(),
    scriptType<SFString, kSFString>(),     scriptType<SFVec2f, kSFVec2f>(),
    scriptType<SFVec3f, kSFVec3f>(),       scriptType<MFFloat, kMFFloat>(),
    scriptType<MFInt32, kMFInt32>(),       scriptType<MFTime, kMFTime>(),
    scriptType<MFRotation, kMFRotation>(), scriptType<MFColor, kMFColor>(),
    scriptType<MFString, kMFString>(),     scriptType<MFVec2f, kMFVec2f>(),
    scriptType<MFVec3f, kMFVec3f>(),
};

}  // namespace

const GrammarRow* findGrammarRow(std::int32_t node, FieldKeyword keyword) {
    const std::size_t number =
        kRowIndex.numbers[static_cast<std::size_t>(node)][static_cast<std::size_t>(keyword)];
    return number ? &kRows[number - 1] : nullptr;
}

const ScriptType* findScriptType(std::int32_t type) {
    for (const ScriptType& row : kScriptTypes) {
        if (row.type == type) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace nodes
