// KX_REFUSE(NAME, "words", statement); is a statement or a declaration that must not compile. The words are a regular
// expression for the message that the compiler must give. The build registers a test for each row that it finds in the
// sources and compiles the source with -DNAME=, for it. Rows whose name is not defined are dropped.
#pragma once

#define KX_KEEP(...) __VA_ARGS__
#define KX_DROP(...)
#define KX_THIRD(first, second, third, ...) third

// A defined name is a comma, which moves KX_KEEP from the second place to the third.
#define KX_REFUSE(name, words, ...) KX_THIRD(name, KX_KEEP, KX_DROP, )(__VA_ARGS__)
