# Doxygen's input filter. In our headers a comment "///" is the contract of all declarations below it, up to the next blank
# line or comment; Doxygen would give it to the first of them alone. So it is put before each of the others, on the same
# line, so that line numbers stay.
function depthChange(line)
{
    return gsub(/[{(]/, "", line) - gsub(/[})]/, "", line)
}
{
    text = $0
    sub(/^[ \t]+/, "", text)
    code = text
    sub(/[ \t]*\/\/.*$/, "", code)
}
depth > 0 { # inside of a declaration that goes on over several lines
    depth += depthChange(code)
    open = depth > 0 || code !~ /[;}]$/
    print
    next
}
open && code != "" {
    depth = depthChange(code)
    open = depth > 0 || code !~ /[;}]$/
    print
    next
}
text ~ /^\/\/\/([^<]|$)/ {
    if (!inComment) contract = ""
    inComment = 1
    sub(/^\/\/\/ ?/, "", text)
    contract = contract (text == "" ? " <br>" : " " text)
    first = 1
    print
    next
}
{ inComment = 0 }
code == "" || code ~ /^(#|public:|protected:|private:)/ {
    contract = ""
    print
    next
}
code ~ /^(class|struct|enum|namespace|friend|[{}])/ {
    contract = ""
    print
    next
}
{
    depth = depthChange(code)
    open = depth > 0 || code !~ /[;}]$/
    if (!first && contract != "" && text !~ /\/\/\/</ && code !~ /= delete;$/ && code !~ /^(virtual )?~/) print "/**" contract " */ " $0
    else print
    first = 0
}
