# Counts, for tools/long/coverage.sh, how often each line and each branch of a target runs. GCC only; the programs that
# use the target are left as they are.
function(qel_count_coverage target)
  # Unoptimised: every line of the source has code of its own then. Threads may lose counts to each other, never all.
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:--coverage -O0>)
  target_link_options(${target} PRIVATE --coverage)
  # Matching has a limit of time. Every copy of what is always inlined would count anew.
  set_source_files_properties(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../src/strings/PatternSearch.cpp
    TARGET_DIRECTORY VarnelQELRoots PROPERTIES COMPILE_OPTIONS "-O1;-Dalways_inline=noinline")
endfunction()
