# The source file CODE stands word for word in README.
file(READ ${README} readme)
file(READ ${CODE} code)
string(FIND "${readme}" "```cpp\n${code}```" position)
if(position EQUAL -1)
    message(FATAL_ERROR "${README} doesn't show the code of ${CODE}")
endif()
