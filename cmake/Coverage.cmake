# Counts, for tools/long/coverage.sh, how often each line and each branch of a target runs. GCC only; the programs that
# use the target are left as they are.
function(qel_count_coverage target)
  # Unoptimised: every line of the source has code of its own then. Threads may lose counts to each other, but never all.
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:--coverage -O0>)
  target_link_options(${target} PRIVATE --coverage)
endfunction()
