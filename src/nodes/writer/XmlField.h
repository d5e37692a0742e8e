#pragma once

namespace nodes {

class Field;
class TextStream;

/// One attribute of an element DEPTH tabs in: behind a blank, or on a line of its own. Nothing for
/// a node and for an empty list.
void writeXmlField(TextStream& stream, const Field& field, int depth, bool oneLine);

}  // namespace nodes
