# Makes a C++ source of the page: cmake -D SOURCE=directory -D OUT=file -P embed.cmake
#
# The parts before and behind the place where the data go are two strings. What can't hold a raw string's end mark is
# written as it is.
file(READ ${SOURCE}/page.html page)
file(READ ${SOURCE}/page.css style)
set(script "")
foreach(name IN ITEMS scene picking camera renderer ui)
    file(READ ${SOURCE}/${name}.js part)
    string(APPEND script "${part}\n")
endforeach()
string(REPLACE "<!--STYLE-->" "${style}" page "${page}")
string(REPLACE "<!--SCRIPT-->" "${script}" page "${page}")

string(FIND "${page}" "<!--DATA-->" at)
string(SUBSTRING "${page}" 0 ${at} before)
math(EXPR at "${at} + 11")
string(SUBSTRING "${page}" ${at} -1 behind)

set(text "// Made of dt2Library/output/webscene/: edit those files.\n#include \"output/WebSceneWriter.h\"\n\n")
string(APPEND text "namespace ORBI_LUMO25D\n{\n\n")
string(APPEND text "const char* const WebSceneWriter::pageBefore = R\"PAGE(${before})PAGE\";\n\n")
string(APPEND text "const char* const WebSceneWriter::pageBehind = R\"PAGE(${behind})PAGE\";\n\n")
string(APPEND text "} // namespace ORBI_LUMO25D\n")
file(WRITE ${OUT} "${text}")
