# Both backends must round alike so their classes can be compared point by point.
function(vexaro_target_flags target)
  target_compile_options(${target} PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-ffp-contract=off -Wall -Wextra -Wno-unused-parameter>
    $<$<COMPILE_LANGUAGE:CUDA>:-fmad=false --expt-relaxed-constexpr -Xcompiler=-ffp-contract=off>)
  # Host translation units run thrust on OpenMP.
  target_compile_definitions(${target} PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:THRUST_DEVICE_SYSTEM=THRUST_DEVICE_SYSTEM_OMP>)
  if(VEXARO_SANITIZE)
    # thrust's policy dispatch binds a reference through a null policy pointer that it never
    # reads; UBSan's null check flags it inside the library headers, so that one check is off
    # (AddressSanitizer still stops on any real null access).
    target_compile_options(${target} PRIVATE
      $<$<COMPILE_LANGUAGE:CXX>:-fsanitize=address,undefined -fno-sanitize=null -fno-omit-frame-pointer
        -fno-sanitize-recover=undefined>)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
endfunction()
