#pragma once

/// Numbers as scene files hold them, in the "C" locale whatever the host's locale is. Leading
/// blanks and a sign may stand before a number; text behind it is ignored; text that is no number
/// is 0.

/// All that C's strtod takes: decimal and hexadecimal numbers, infinities, NaN. Narrowed to float,
/// where what is too large becomes infinite.
float ParseFloat(const char* text);

/// Decimal; what is too large or too small becomes the largest or the smallest int.
int ParseInteger(const char* text);
