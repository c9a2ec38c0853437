# Draws the pictures of a run: gnuplot -e "folder='FOLDER'" plots.gp
set terminal svg size 760,420 background rgb "white" font "sans-serif,12"
set datafile separator "\t"
set grid ytics
set key outside right top
series(measurement, contestant) = sprintf("< awk -F '\t' '$1 == \"%s\" && $3 == \"%s\"' %s/figures.tsv", measurement, contestant, folder)
unit(measurement, name) = sprintf("< awk -F '\t' '$1 == \"%s\" && $4 == \"%s\"' %s/figures.tsv", measurement, name, folder)

set style data histograms
set style histogram clustered gap 1
set style fill solid 0.8
set xtics rotate by -20
set yrange [0:*]
set ylabel "messages per second"
set output folder."/messages-flood.svg"
plot unit("inbound flood", "messages/s") using 5:xtic(3) title "to the workbench", \
     unit("outbound flood", "messages/s") using 5 title "from the workbench"
set ylabel "processor time, µs per message"
set output folder."/messages-processor.svg"
plot unit("inbound flood", "CPU us/message") using 5:xtic(3) title "to the workbench", \
     unit("outbound flood", "CPU us/message") using 5 title "from the workbench"
set ylabel "latency, median, µs"
set output folder."/messages-quiet.svg"
plot unit("inbound quiet", "us") using 5:xtic(3) title "to the workbench", \
     unit("outbound quiet", "us") using 5 title "from the workbench"

set style data linespoints
set xtics norotate
set logscale xy
set autoscale y
set ylabel "median, µs"
set xlabel "accounts in the list"
set output folder."/switch.svg"
plot for [name in "'library' 'floor' 'QtDBus' 'QtDBus without a store'"] series("switch, done", name) using 2:5 title name
set output folder."/store.svg"
plot for [name in "'library' 'floor' 'floor without gate' 'QSharedMemory+QJsonDocument' 'Boost.Interprocess'"] \
     series("store", name) using 2:5 title name
set xlabel "processes"
set output folder."/group.svg"
plot for [what in "merging separating"] for [name in "library floor"] \
     series("group, ".what, name) using 2:5 title what.", ".name
