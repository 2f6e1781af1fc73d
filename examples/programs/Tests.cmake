set(shots circles-1.png circles-2.png circles-3.png circles-4.png circles-5.png circles-6.png)
quorvane_program_test(calibrate-lens finds-the-lens 0 "reprojection error 0.0" ${shots} --columns 7 --rows 5 -o camera.yml)
quorvane_program_test(calibrate-lens tells-its-progress 0 "^.2/2. circles-2.png: a board, rated"
    circles-1.png circles-2.png --columns 7 --rows 5 -o two.json)
quorvane_program_test(calibrate-lens fails-without-a-board 1 "calibrate-lens: Not enough points for calibration."
    coins.png --columns 7 --rows 5)
quorvane_program_test(calibrate-lens fails-where-it-cannot-write 1 "Failed to open file for writing: no/such/folder.yml"
    circles-1.png --columns 7 --rows 5 -o no/such/folder.yml)
quorvane_program_test(calibrate-lens needs-a-pattern 2 "--columns is required" circles-1.png)

quorvane_program_test(circle-scale scale 0 "^circle at .246.[23].*, 14.9[0-9]* pixels per mm" target.png)
quorvane_program_test(circle-scale cross 0 "^cross at .246.[23][0-9]*, 174.[78]" target.png --cross)
quorvane_program_test(circle-scale no-cross 1 "there is no cross in the circle" plate.png --cross)
quorvane_program_test(circle-scale refuses-a-radius 2 "--radius" target.png -r 0)

quorvane_program_test(detect-change forgives-nothing-exactly 0 "^changed" photographer.png coins.png --threshold 3)
quorvane_program_test(detect-change same 0 "^unchanged" photographer.png photographer.png --exact)
quorvane_program_test(detect-change refuses-sizes 1 "different sizes" photographer.png coins.png --exact)
quorvane_program_test(detect-change needs-two-pictures 2 "later is required" coins.png)

set(job --mark 142,74.5 --job 105,63 142,63 142,55 162,71 142,87 142,79 105,79)
quorvane_program_test(fill-copies finds-twelve 0 "^12 copies" tray.png ${job} -s 0.7 -o filled.png)
quorvane_program_test(fill-copies none-at-full-similarity 1 "^0 copies" tray.png ${job} -s 1 -o unfilled.png)
quorvane_program_test(fill-copies tells-a-bad-mark 1 "fill-copies: Can't find dominant LAB color point!"
    tray.png --mark 5000,5000 --job 1,1)
quorvane_program_test(fill-copies tells-a-bad-point 2 "--mark" tray.png --mark 142 --job 1,1)

quorvane_program_test(find-marks counts-the-coins 0 "^24 marks" coins.png -r 26 -s 0.7 --order best -o found.png)
quorvane_program_test(find-marks finds-none 1 "^0 marks" coins.png -r 26 -s 0.99)
quorvane_program_test(find-marks refuses-a-radius 2 "--radius" coins.png -r 0)
quorvane_program_test(find-marks refuses-an-order 2 "--order" coins.png --order middle)

set(cameras left.png right.png --turn-left clockwise)
quorvane_program_test(join-cameras joins 0 "^8[0-9][0-9] x 5[56][0-9] pixels, seam at column 4[0-9][0-9]" ${cameras} --overlap 250
    --save pair.yml -o pair.png)
quorvane_program_test(join-cameras reads-its-map 0 "^8[0-9][0-9] x 5[56][0-9] pixels" ${cameras} --load pair.yml -o pair-again.png)
quorvane_program_test(join-cameras has-nothing-in-common 1 "too little in common" coins.png circles-1.png --overlap 50)
quorvane_program_test(join-cameras refuses-other-maps 1 "This file has been corrupted" ${cameras} --load camera.yml)
quorvane_program_test(join-cameras needs-a-map 2 "Exactly 1 option" ${cameras})

quorvane_program_test(laser-dots writes-dots 0 "^384 x 303 pixels, [0-9]+ dots" coins.png --low 60 --high 200 -o coins-dots.png)
quorvane_program_test(laser-dots refuses-a-text 1 "bed.txt is not a picture that can be read" bed.txt)
quorvane_program_test(laser-dots refuses-an-ending 1 "dots.text cannot be written" coins.png -o dots.text)
quorvane_program_test(laser-dots needs-a-picture 2 "picture is required")
quorvane_program_test(laser-dots tells-what-is-missing 2 "does not exist" missing.png)
quorvane_program_test(laser-dots has-help 0 "Turns a picture into dots" --help)

quorvane_program_test(map-to-machine maps 0 "off by at most 0.1" bed.png bed.txt -p 320,240 10,20 -o from-above.png --save map.yml)
quorvane_program_test(map-to-machine reads-its-map 0 ".320, 240. -> .-5.29" bed.png map.yml -p 320,240)
quorvane_program_test(map-to-machine refuses-a-picture 1 "neither points nor a map|map-to-machine: " bed.png coins.png)
quorvane_program_test(map-to-machine needs-points 2 "pairs is required" bed.png)

quorvane_program_test(measure-edges line 0 "Line: y = 0.07x . 34.2[0-9]*, from 140 edge points" plate.png
    -c 160,45 --size 140,40 --scan down --polarity rising)
quorvane_program_test(measure-edges circle 0 "radius 23.2.*score 0.97" coins.png
    -c 211,191 --radius 31 --scan inward --polarity rising --threshold 60)
quorvane_program_test(measure-edges no-line 1 "no edge in this rectangle" plate.png -c 160,45 --size 140,40 --scan down --threshold 2000)
quorvane_program_test(measure-edges no-circle 1 "no edge in this circle" plate.png -c 160,120 --radius 10 --threshold 200)
quorvane_program_test(measure-edges one-shape 2 "Exactly 1 option" plate.png -c 160,120 --radius 10 --size 3,3)
quorvane_program_test(measure-edges a-shape-at-all 2 "Exactly 1 option" plate.png -c 160,120)

quorvane_program_test(print-board draws 0 "1653 x 1181 pixels, 140 x 100 mm" printed.tif)
quorvane_program_test(print-board refuses-big-markers 1 "smaller than the square" printed.tif --marker 30)
quorvane_program_test(print-board refuses-text 2 "--columns" printed.tif --columns many)

quorvane_program_test(straighten straightens 0 "wrote straightened.png" camera.yml circles-5.png --scale 0.75 -o straightened.png)
quorvane_program_test(straighten refuses-other-files 1 "straighten: " bed.txt circles-5.png)
quorvane_program_test(straighten needs-a-camera 2 "picture is required" bed.txt)

# These read what another test has written.
if(QUORVANE_BUILD_TESTS)
    set_tests_properties(examples/straighten/straightens examples/join-cameras/refuses-other-maps
        PROPERTIES DEPENDS examples/calibrate-lens/finds-the-lens)
    set_tests_properties(examples/join-cameras/reads-its-map PROPERTIES DEPENDS examples/join-cameras/joins)
    set_tests_properties(examples/map-to-machine/reads-its-map PROPERTIES DEPENDS examples/map-to-machine/maps)
endif()
