# Makes a web page of the manual, to lie beside its pictures:
#   cmake -D CMARK_GFM=PROGRAM -D MARKDOWN=FILE -D TEMPLATE=FILE -D PAGE=FILE -D PROJECT_VERSION=VERSION -P manual.cmake
# The manual is our own, so its HTML may be let through (--unsafe).
execute_process(COMMAND ${CMARK_GFM} --unsafe --extension table ${MARKDOWN}
    OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)

# The converter gives headings no names to link to: in lower case, with dashes for blanks.
string(REGEX MATCHALL "<h2>[^<]*" headings "${body}")
foreach(heading ${headings})
    string(REPLACE "<h2>" "" name "${heading}")
    string(TOLOWER "${name}" name)
    string(REPLACE " " "-" name "${name}")
    string(REPLACE "<h2>" "<h2 id=\"${name}\">" named "${heading}")
    string(REPLACE "${heading}" "${named}" body "${body}")
endforeach()
string(REGEX MATCHALL "href=\"#[^\"]*\"" links "${body}")
foreach(link ${links})
    string(REPLACE "href=\"#" "id=\"" name "${link}")
    string(FIND "${body}" "${name}" place)
    if(place EQUAL -1)
        message(FATAL_ERROR "No heading of the manual has ${name}.")
    endif()
endforeach()

configure_file(${TEMPLATE} ${PAGE} @ONLY)
