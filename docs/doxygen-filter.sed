#!/bin/sed -Ef
# Turns the plain comments of a header into those that Doxygen reads: the one at the head documents
# the file, the one before a declaration or behind it that declaration. Code in a comment stands
# three blanks to the right.
1s|^([^/])|/// @file\n\1|
1s|^//|/// @file\n///|
s|^( *)//   |\1///      |
s|^( *)//( .*)?$|\1///\2|
t
s|([;,{]) +// |\1  ///< |
/= delete;$/d
