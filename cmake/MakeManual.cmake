# Script: makes a page of the manual and completions for bash and zsh out of what PROGRAM says of its options.
# Takes PROGRAM, NAME, SUMMARY, VERSION, and where to write: MANUAL, COMPLETION and ZSH_COMPLETION.
cmake_policy(VERSION 3.25)

string(ASCII 10 newline)
# Leaks are for tests to find, which know those of other libraries.
set(ENV{ASAN_OPTIONS} detect_leaks=0)

function(ask result)
    execute_process(COMMAND ${PROGRAM} ${ARGN} OUTPUT_VARIABLE output ERROR_VARIABLE trouble RESULT_VARIABLE status)
    if(NOT status MATCHES "^[02]$")
        message(FATAL_ERROR "${NAME} ${ARGN} ended with ${status}: ${trouble}")
    endif()
    set(${result} "${output}${trouble}" PARENT_SCOPE)
endfunction()

# As roff wants text: nothing is a command, and hyphens can be copied.
function(to_roff result text)
    string(REPLACE "\\" "\\e" text "${text}")
    string(REPLACE "-" "\\-" text "${text}")
    string(REGEX REPLACE "^([.'])" "\\\\&\\1" text "${text}")
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

# The words that an option takes: those that stand in the help, or that a refusal lists.
function(find_words result option value)
    set(words "")
    if(value MATCHES "\\|")
        string(REGEX REPLACE "[^a-z|]" "" value "|${value}|")
        while(value MATCHES "\\|([a-z]+)\\|")
            string(APPEND words " ${CMAKE_MATCH_1}")
            string(REPLACE "|${CMAKE_MATCH_1}|" "|" value "${value}")
        endwhile()
    elseif(value STREQUAL "NAME")
        ask(refusal model.obj -o picture.png ${option} ?)
        if(NOT refusal MATCHES "is not (one of )?([a-zA-Z0-9, -]+);")
            message(FATAL_ERROR "${NAME} doesn't say which names ${option} takes: ${refusal}")
        endif()
        string(REGEX REPLACE ", | or " " " words "${CMAKE_MATCH_2}")
    endif()
    string(STRIP "${words}" words)
    set(${result} "${words}" PARENT_SCOPE)
endfunction()

ask(help --help)
set(manual)
set(flags)
set(cases)
set(zsh_cases)
set(usage "${NAME} [options]")
set(part BEFORE)
string(APPEND help "${newline}")
while(NOT help STREQUAL "")
    string(FIND "${help}" "${newline}" end)
    string(SUBSTRING "${help}" 0 ${end} line)
    math(EXPR end "${end} + 1")
    string(SUBSTRING "${help}" ${end} -1 help)
    if(line MATCHES "^Usage: (.*)$")
        set(usage "${CMAKE_MATCH_1}")
        continue()
    endif()
    if(line MATCHES "^([A-Z][A-Za-z ]*):$")
        to_roff(title "${CMAKE_MATCH_1}")
        string(APPEND manual ".SS ${title}${newline}")
        set(part OPTIONS)
        continue()
    endif()
    if(part STREQUAL "BEFORE" OR line STREQUAL "")
        continue()
    endif()
    if(line MATCHES "^  (-[^ ]*|[A-Z]+)(.*)$")
        # An option, its value unless two blanks follow, and the words about it if they fit in the line.
        set(names "${CMAKE_MATCH_1}")
        set(rest "${CMAKE_MATCH_2}")
        set(value "")
        set(text "")
        if(rest MATCHES "^ (Needs: [^ ]+)( +(.*))?$")
            set(text "${CMAKE_MATCH_1}.")
            if(CMAKE_MATCH_3)
                string(APPEND text "${newline}${CMAKE_MATCH_3}")
            endif()
        elseif(rest MATCHES "^ ([^ ]+)( \\.\\.\\.)?( +(.*))?$")
            set(value "${CMAKE_MATCH_1}")
            set(text "${CMAKE_MATCH_4}")
        else()
            string(STRIP "${rest}" text)
        endif()
        string(REPLACE "," ", " shown "${names}")
        to_roff(shown "${shown}")
        to_roff(shown_value "${value}")
        to_roff(text "${text}")
        string(APPEND manual ".TP${newline}\\fB${shown}\\fR \\fI${shown_value}\\fR${newline}")
        if(NOT text STREQUAL "")
            string(APPEND manual "${text}${newline}")
        endif()
        if(names MATCHES "^-")
            string(REPLACE "," " " names "${names}")
            string(APPEND flags " ${names}")
            string(REPLACE " " "|" pattern "${names}")
            string(REGEX MATCH "--[-a-z]+" long "${names}")
            find_words(words "${long}" "${value}")
            if(NOT words STREQUAL "")
                set(files)
                if(value MATCHES "FILE|^\\[")
                    set(files " files=yes")
                endif()
                string(APPEND cases "    ${pattern}) words='${words}'${files} ;;${newline}")
                string(APPEND zsh_cases "    ${pattern}) names='${words}'${files} ;;${newline}")
            elseif(NOT value STREQUAL "" AND NOT value MATCHES "FILE|OUT|^\\[")
                string(APPEND cases "    ${pattern}) return ;;${newline}")
                string(APPEND zsh_cases "    ${pattern}) return 1 ;;${newline}")
            endif()
        endif()
    elseif(line MATCHES "^ +(.*)$")
        to_roff(text "${CMAKE_MATCH_1}")
        string(APPEND manual "${text}${newline}")
    else()
        if(NOT part STREQUAL "AFTER")
            string(APPEND manual ".SH NOTES${newline}")
            set(part AFTER)
        endif()
        to_roff(text "${line}")
        string(APPEND manual "${text}${newline}.br${newline}")
    endif()
endwhile()
string(STRIP "${flags}" flags)

string(TOUPPER "${NAME}" title)
to_roff(title "${title}")
to_roff(name "${NAME}")
to_roff(summary "${SUMMARY}")
to_roff(usage "${usage}")
file(WRITE ${MANUAL} ".TH ${title} 1 \"\" \"Orvane ${VERSION}\" \"User Commands\"
.SH NAME
${name} \\- ${summary}
.SH SYNOPSIS
${usage}
.SH OPTIONS
${manual}")

string(REPLACE "-" "_" function "_${NAME}")
file(WRITE ${COMPLETION} "# What bash offers after ${NAME}, made out of its options.
${function}()
{
    local word=\${COMP_WORDS[COMP_CWORD]} words= files=
    case \${COMP_WORDS[COMP_CWORD - 1]} in
${cases}    esac
    [[ -z \$words && \$word == -* ]] && words='${flags}'
    mapfile -t COMPREPLY < <(
        compgen -W \"\$words\" -- \"\$word\"
        [[ -n \$words && -z \$files ]] || compgen -f -- \"\$word\")
}
complete -o filenames -F ${function} ${NAME}
")
file(WRITE ${ZSH_COMPLETION} "#compdef ${NAME}
# What zsh offers after ${NAME}, made out of its options.
local names= files=
case \$words[CURRENT-1] in
${zsh_cases}esac
[[ -z \$names && \$PREFIX == -* ]] && names='${flags}'
local ret=1
[[ -n \$names ]] && compadd -- \${=names} && ret=0
[[ -n \$names && -z \$files ]] || { _files && ret=0 }
return ret
")
