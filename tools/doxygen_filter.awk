# Makes of the comments of a header what Doxygen reads, line for line: a comment directly before a declaration becomes
# its text, the one at the head of the file that of the file, or of the class that it begins with the name of. Pictures
# and code, which are indented behind an empty line, stay as they are.
#
#   awk -f doxygen_filter.awk <header>

# A line that is nothing but a comment waits for what follows.
/^ *\/\/( |$)/ {
  held[++count] = $0
  next
}

{
  put(count > 0 && (NR - count == 1 || $0 !~ /^ *$|^ *}|^ *namespace|^ *(public|protected|private):/))
  print
}

END { put(0) }

function put(documents,    i, last, text, head, picture, list, blank, of_file, named) {
  last = count
  of_file = NR - last <= 1
  count = 0
  if (!documents) {
    for (i = 1; i <= last; i++) print held[i]
    return
  }
  for (i = 1; i <= last; i++) {
    text = held[i]
    sub(/^ *\/\/ ?/, "", text)
    blank = text == ""
    head = i == 1 ? "/** " : ""
    if (i == 1 && of_file && held[2] == "//" && text ~ /^[TZ][A-Za-z]+(<[^>]*>)?: /) {
      match(text, /^[A-Za-z]+/)
      print "/** \\class " substr(text, 1, RLENGTH)
      held[2] = "// " text
      of_file = 0
      named = 1
      continue
    }

    if (picture && text ~ /^[^ ]/) {
      head = head "\\endverbatim "
      picture = 0
    }
    if (text ~ /^[^ ]/) list = text ~ /^- /
    if (!picture) gsub(/[\\@<>#%&]/, "\\\\&", text)
    # A picture begins on the line before it.
    if (!picture && !list && i < last && held[i + 1] ~ /^ *\/\/  / && (blank || named && i == 2)) {
      text = text " \\verbatim"
      picture = 1
    }
    if (i == last) text = text (picture ? "\n\\endverbatim" : "") (of_file ? " \\file" : "") " */"
    print head text
  }
}
