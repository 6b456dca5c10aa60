# Warnings for every target of ours. TIDEWHEEL_WERROR turns them into errors; ./check does.
function(tw_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra         # the ground
    -Wshadow              # a local that hides a member is nearly always a mistake
    -Wnon-virtual-dtor    # interfaces are deleted through their base
    -Woverloaded-virtual  # an effect that misspells an operation draws nothing
    -Wcast-align          # file bytes are copied, never reinterpreted
    -Wformat=2            # all messages go through printf formats
    -Wundef
    -Wvla)
  if(TIDEWHEEL_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
