# Runs the guide's example program (over the recording bus) on the bundled
# document and on a body that is not JSON, and compares what it prints.
#   cmake -DPROGRAM=... -DEXAMPLES=... -DWORK=... [-DEMULATOR=...] -P check_guide_example.cmake
function(run expected_status expected_text)
    execute_process(COMMAND ${EMULATOR} ${PROGRAM} --wait 0 ${ARGN}
        OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE status)
    string(FIND "${out}" "${expected_text}" at)
    if(NOT status EQUAL expected_status OR at EQUAL -1)
        message(FATAL_ERROR "guide_example ${ARGN}: status ${status} (expected ${expected_status}), "
                            "expected\n${expected_text}\nin\n${out}${err}")
    endif()
endfunction()

run(0 "TIMEP: zone GMT+08:00, offset 480 min, daylight saving on from month 3, week 2, weekday 0
VPP: protection on, low 11.50 V, high 32.00 V
" ${EXAMPLES}/mdvr_parameters.json)
file(WRITE ${WORK}/not-json.txt "not json!!")
run(1 "parameters: the body of 10 bytes is not JSON\n" ${WORK}/not-json.txt)
file(WRITE ${WORK}/no-time.json [[{"PARAMETER":{"MDVR":{"VPP":{"VPS":0,"LV":"9.05"}}}}]])
run(0 "TIMEP: not in this message (record unchanged)
VPP: protection off, low 9.05 V, high 0.00 V
" ${WORK}/no-time.json)
