# Draws what the soak has sampled: gnuplot -e "samples='FILE.csv'; picture='FILE.svg'" THIS
set datafile separator ','
set datafile missing NaN
set terminal svg size 1000,1100 dynamic font 'sans-serif,11'
set output picture
set multiplot layout 5,1 margins 0.09,0.84,0.05,0.98 spacing 0.03
set key outside right top
set grid ytics
# Few, since each tick takes as much room in the file as a hundred samples.
set ytics nomirror
set xtics nomirror
unset mxtics
unset mytics
set format x ''
set yrange [0:*]

processes = 'host wb0 wb1 wb2'
rows(process) = sprintf("< grep ',%s,' '%s'", process, samples)
# A long run has more samples than a picture has room for.
count(process) = int(system(sprintf("grep -c ',%s,' '%s'", process, samples)))
step(process) = 1 + count(process) / 120

set ylabel 'resident, MiB'
set ytics 10
plot for [p in processes] rows(p) every step(p) using ($1/60):($3/1024) with lines title p
set ylabel 'allocated, MiB'
set ytics 0.5
plot for [p in processes] rows(p) every step(p) using ($1/60):($4/1024) with lines title p
set ylabel 'handles'
set ytics 50
plot for [p in processes] rows(p) every step(p) using ($1/60):5 with lines title p
set ylabel 'threads'
set ytics 20
plot for [p in processes] rows(p) every step(p) using ($1/60):6 with lines title p
set ylabel 'latency, ms'
set xlabel 'minutes'
set format x '%g'
set logscale y
set ytics 10
unset mytics
set yrange [*:*]
plot rows('wb0') every step('wb0') using ($1/60):($8/1000) with lines title 'inbound, median', \
     rows('wb0') every step('wb0') using ($1/60):($9/1000) with lines title 'inbound, 99 %', \
     rows('wb0') every step('wb0') using ($1/60):($11/1000) with points pt 7 ps 0.2 title 'switch'
