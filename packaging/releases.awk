# SPDX-License-Identifier: MIT
# The releases of CHANGELOG.md as software centres read them. A release is a heading "## VERSION (YEAR-MONTH-DAY)", and
# what came with it the list below; other headings, such as that of what is not released yet, are left out with what is
# below them, and so are headings inside a release.
function escaped(text) {
  gsub(/&/, "\\&amp;", text)
  gsub(/</, "\\&lt;", text)
  gsub(/>/, "\\&gt;", text)
  gsub(/`/, "", text)
  gsub(/\*\*/, "", text)
  return text
}
function end_item() {
  if (item == "") return
  if (!in_list) print "        <ul>"
  in_list = 1
  print "          <li>" escaped(item) "</li>"
  item = ""
}
function end_paragraph() {
  if (paragraph != "") print "        <p>" escaped(paragraph) "</p>"
  paragraph = ""
}
function end_block() {
  end_item()
  if (in_list) print "        </ul>"
  in_list = 0
  end_paragraph()
}
function end_release() {
  end_block()
  if (in_release) print "      </description>\n    </release>"
  in_release = 0
}
/^## / {
  end_release()
  if (match($0, /^## [0-9]+(\.[0-9]+)* \([0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]\)$/)) {
    in_release = 1
    if (!is_any++) print "  <releases>"
    print "    <release version=\"" $2 "\" date=\"" substr($3, 2, 10) "\">\n      <description>"
  }
  next
}
!in_release { next }
/^### / { end_release(); next }
/^$/ { end_block(); next }
/^- / { end_paragraph(); end_item(); item = substr($0, 3); next }
{
  sub(/^ +/, "")
  if (item != "") item = item " " $0
  else paragraph = paragraph (paragraph == "" ? "" : " ") $0
}
END {
  end_release()
  if (is_any) print "  </releases>"
}
