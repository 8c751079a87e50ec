# Sourced by scripts/make-samples: draws what the demo shows, a programme and five ads with their sounds. Everything is
# painted by ffmpeg: still layers from formulas, moved over each other.

sans=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf
serif=/usr/share/fonts/truetype/dejavu/DejaVuSerif-Bold.ttf

# still WIDTHxHEIGHT RED GREEN BLUE ALPHA FILE   one painted picture, its channels as expressions of X and Y
still() {
  coder -f lavfi -i "color=black:size=$1:duration=0.04,format=rgba,geq=r='$2':g='$3':b='$4':a='$5'" -frames:v 1 \
    -f image2 -c:v png "$6"
}

# layer NAME WIDTHxHEIGHT RED GREEN BLUE ALPHA   a still of the film that is being drawn
layer() {
  still "$2" "$3" "$4" "$5" "$6" "$studio/$1.png"
  layers+=(-loop 1 -r 25 -i "$studio/$1.png")
}

# words SIZE Y FONT COLOUR TEXT [X]   a filter that writes a line
words() {
  printf "drawtext=fontfile=%s:text='%s':fontsize=%d:fontcolor=%s:x=%s:y=%d" "$3" "$5" "$1" "$4" "${6:-92}" "$2"
}

# chord HERTZ...   a filter that sounds these notes together
chord() {
  local notes=() mixed='' hertz
  for hertz; do
    notes+=("sine=$hertz:r=48000,volume=0.2[n$hertz]")
    mixed+="[n$hertz]"
  done
  (IFS=';'; printf '%s;%samix=inputs=%d:normalize=0' "${notes[*]}" "$mixed" $#)
}

# film NAME SECONDS SOUND SCENE   the layers put together; SCENE takes them as [0], [1] ... and ends without a label
film() {
  make "$1" coder "${layers[@]}" -f lavfi -i "$3" -filter_complex "$4,format=yuv420p[seen]" -map '[seen]' \
    -map $((${#layers[@]} / 6)):a -ac 2 -t "$2" -c:v libx264 -preset veryfast -pix_fmt yuv420p -g 50 -b:v 2M -c:a aac \
    -b:a 96k -movflags +faststart -f mp4
}

# drawn FILE FUNCTION   draws a film that is not there yet, with a fresh set of layers
drawn() {
  [ -e "$1" ] && return
  local studio=.new.$$.${1%.*} layers=()
  mkdir -p "$studio"
  "$2" "$1"
  rm -r "$studio"
}

make_demo() {
  drawn evening.mp4 draw_evening
  make artwork.png coder -ss 10 -i evening.mp4 -frames:v 1 -vf crop=480:720,scale=400:600 -f image2 -c:v png
  drawn ad-lamps.mp4 draw_lamps
  drawn ad-nights.mp4 draw_nights
  drawn ad-juice.mp4 draw_juice
  drawn ad-ferries.mp4 draw_ferries
  drawn ad-umbrellas.mp4 draw_umbrellas
}

# The programme: half a minute of evening over a bay, with a clock and a soft chord.
draw_evening() {
  local centre='hypot(X-180,Y-180)'
  layer sky 1280x470 '27+228*pow(Y/470,0.8)' '42+158*pow(Y/470,1.7)' '82+70*sin(PI*Y/470)+33*Y/470' 255
  layer sun 360x360 255 "238-40*$centre/180" "190-110*$centre/180" \
    "if(lt($centre,90),255,150*pow(max(0,1-($centre-90)/90),2))"
  layer hills 1280x160 38 26 56 'if(gt(Y,110-50*exp(-pow((X-250)/210,2))-78*exp(-pow((X-1060)/240,2))-9*sin(X*0.035)-4*sin(X*0.11)),255,0)'
  layer sea 1280x250 '232-212*pow(Y/250,0.45)' '149-122*pow(Y/250,0.45)' '106-50*pow(Y/250,0.45)' 255
  layer glitter 1280x250 255 214 150 '(80+175*Y/250)*pow(max(0,sin(X*0.045+3*sin(Y*0.09)+Y*0.6)*sin(Y*(0.9-Y*0.0018)+2*sin(X*0.02))),6)*exp(-pow((X-640)/(60+Y*0.9),2))'
  film "$1" 30 "$(chord 220 277.18 329.63),tremolo=f=0.25:d=0.6,aecho=0.8:0.7:120:0.4" \
    "[0]pad=1280:720[0p];[0p][1]overlay=x=460:y='120+t*5.2'[1o];[1o][2]overlay=0:312[2o];[3][4]overlay=x='26*sin(t*0.9)'[water];[2o][water]overlay=0:470,drawtext=fontfile=$sans:text='%{pts\:gmtime\:0\:%M\\\\\:%S}':fontsize=40:fontcolor=white@0.75:x=w-text_w-64:y=54"
}

# Bright: rays turning behind a lamp.
draw_lamps() {
  local turn='atan2(Y-700,X-700)' far='hypot(X-700,Y-700)'
  layer wall 1280x720 255 '246-46*hypot(X-900,Y-330)/900' '222-120*hypot(X-900,Y-330)/900' 255
  layer rays 1400x1400 255 255 244 "200*pow(max(0,sin(9*$turn)),2)*max(0,1-$far/690)"
  layer lamp 360x420 'if(lt(Y,190),70,if(lt(Y,330),214,255))' 'if(lt(Y,190),52,if(lt(Y,330),84-26*X/360,236))' \
    'if(lt(Y,190),48,if(lt(Y,330),66-20*X/360,170))' \
    '255*max(0,min(1,if(lt(Y,190),3-abs(X-180),if(lt(Y,330),(1-hypot((X-180)/170,(Y-330)/140))*140,62-hypot(X-180,Y-330)))))'
  film "$1" 6 "$(chord 523.25 659.25 783.99),tremolo=f=3:d=0.4,afade=t=in:d=0.3,afade=t=out:st=5.4:d=0.6" \
    "[1]rotate=a='t*0.25':c=none[turning];[0][turning]overlay=x=200:y=-370:shortest=1[1o];[1o][2]overlay=x=720:y='-60+8*sin(t*2)',$(words 120 270 "$serif" 0x4a2a1e Lumen),$(words 36 420 "$sans" 0x6b4636 'Lamps that know the evening')"
}

# Dark: northern lights over a train.
draw_nights() {
  layer sky 1280x720 '4+14*Y/720+if(gt(random(0),0.9988),190*random(1),0)' '8+24*Y/720+if(gt(random(2),0.9988),120,0)' '26+36*Y/720' 255
  local curtain='pow(0.5+0.5*sin(X*0.012+2*sin(X*0.0041)),2)*(0.75+0.25*sin(X*0.13))'
  layer lights 1900x460 '40+90*pow(1-Y/460,2)' '230-60*(1-Y/460)' '150+60*(1-Y/460)' \
    "190*$curtain*pow(Y/460,1.4)*max(0,min(1,(440-Y+30*sin(X*0.009))/70))"
  layer hills 1280x200 3 6 14 'if(gt(Y,120-70*exp(-pow((X-980)/190,2))-46*exp(-pow((X-300)/260,2))-7*sin(X*0.05)-5*sin(X*0.13)),255,0)'
  layer train 620x26 'if(between(mod(X,44),10,34)*between(Y,7,17),255,28)' 'if(between(mod(X,44),10,34)*between(Y,7,17),206,32)' \
    'if(between(mod(X,44),10,34)*between(Y,7,17),120,48)' 'if(lt(mod(X,310),304),255,0)'
  film "$1" 6 "$(chord 146.83 220 349.23),tremolo=f=0.5:d=0.5,aecho=0.8:0.7:180:0.5,afade=t=in:d=0.3,afade=t=out:st=5.4:d=0.6" \
    "[0][1]overlay=x='-520+60*t':y=20:shortest=1[1o];[1o][2]overlay=0:520[2o];[2o][3]overlay=x='-620+t*310':y=664,$(words 92 280 "$serif" 0xeef6ff 'Northern Nights'),$(words 36 408 "$sans" 0xb9d2e6 'Asleep by ten, under the lights by two')"
}

# slice RADIUS   a slice of an orange, as red, green, blue and alpha
slice() {
  local far="hypot(X-$1,Y-$1)/$1" turn="atan2(Y-$1,X-$1)"
  local flesh="lt($far,0.82)*gt(abs(sin(5*$turn))*$far,0.055)*gt($far,0.09)" rind="gt($far,0.92)"
  printf '%s\n' "if($flesh,255-18*$far,if($rind,236,255))" "if($flesh,170-40*$far+14*sin(40*$turn),if($rind,112,240))" \
    "if($flesh,40,if($rind,20,205))" "255*max(0,min(1,(1-$far)*$1))"
}

# Colourful: slices of oranges, rolling.
draw_juice() {
  local size channels
  layer wall 1280x720 255 '150-62*Y/720' '60+40*X/1280' 255
  for size in 270 170 110; do
    mapfile -t channels < <(slice $size)
    layer "slice$size" "$((2 * size))x$((2 * size))" "${channels[@]}"
  done
  film "$1" 6 "$(chord 392 493.88 587.33 739.99),tremolo=f=6:d=0.5,afade=t=in:d=0.2,afade=t=out:st=5.4:d=0.6" \
    "[1]rotate=a='t*0.7':c=none[big];[2]rotate=a='-t*1.1':c=none[middle];[3]rotate=a='t*1.7':c=none[small];[0][big]overlay=x='660+14*t':y=150:shortest=1[1o];[1o][middle]overlay=x='1010-10*t':y='-70+8*t'[2o];[2o][small]overlay=x=520:y='540-24*t',$(words 170 210 "$serif" white Pip),$(words 36 420 "$sans" white 'Squeezed this morning')"
}

# wave HEIGHT LENGTH RED GREEN BLUE   a band of water with a wavy edge
wave() {
  layer "wave$5" "1900x$1" "$3" "$4" "$5" "255*max(0,min(1,(Y-22-18*sin(X*2*PI/$2))/2))"
}

# Cool: a boat on three waves.
draw_ferries() {
  layer sky 1280x720 '150+90*Y/500' '214+20*Y/500' '224-10*Y/500' 255
  wave 330 310 58 148 164
  layer boat 300x150 'if(lt(Y,92),250,196)' 'if(lt(Y,92),246,52)' 'if(lt(Y,92),238,54)' \
    '255*if(lt(Y,92),between(X,70,220)*gt(Y,44)*(1-between(mod(X,38),12,28)*between(Y,58,76))+between(X,168,198)*between(Y,4,44),between(X,14+(Y-92)*0.7,286-(Y-92)*0.9))'
  wave 270 420 30 108 134
  wave 190 540 14 72 102
  film "$1" 6 "$(chord 261.63 392 523.25),tremolo=f=0.7:d=0.7,afade=t=in:d=0.3,afade=t=out:st=5.4:d=0.6" \
    "[0][1]overlay=x='-310+50*t':y=400:shortest=1[1o];[1o][2]overlay=x='640+44*t':y='352+9*sin(t*2.1)'[2o];[2o][3]overlay=x='-120-70*t':y=455[3o];[3o][4]overlay=x='-560+92*t':y=540,$(words 110 170 "$serif" 0x0e4866 'Tide Line'),$(words 36 310 "$sans" 0x0e4866 'A ferry every half hour')"
}

# Soft: rain on green hills, and who does not mind.
draw_umbrellas() {
  layer sky 1280x720 '176+30*Y/720' '196+24*Y/720' '196+10*Y/720' 255
  layer hills 1280x360 'if(gt(Y,190-60*sin(X*0.004)),52,104)' 'if(gt(Y,190-60*sin(X*0.004)),98,142)' 'if(gt(Y,190-60*sin(X*0.004)),72,112)' \
    '255*max(0,min(1,(Y-90-70*sin(X*0.0052+2.4))/2))'
  local dome='hypot((X-180)/170,(Y-180)/165)' scallop='(180-15*abs(sin((X-10)*PI/85)))'
  layer umbrella 360x420 "if(lt(Y,182)*lt($dome,1),196+30*gt(sin((X-180)/(20+$dome*60)*2),0),66)" "if(lt(Y,182)*lt($dome,1),44,46)" 'if(lt(Y,182),56,44)' \
    "255*max(max(0,min(1,min((1-$dome)*165,$scallop-Y))),max(lt(abs(X-180),4)*between(Y,150,372),between(hypot(X-158,Y-372),18,26)*gte(Y,372)))"
  layer rain 1280x1440 235 244 250 'if(lt(mod(X*7+floor(X/3)*53+mod(Y,720)*0.999+floor(X/3)*floor(X/3)*17,361),26)*eq(mod(floor(X),9),0),120,0)'
  film "$1" 6 "$(chord 196 246.94 293.66 440),tremolo=f=1.5:d=0.4,afade=t=in:d=0.3,afade=t=out:st=5.4:d=0.6" \
    "[0][1]overlay=x=0:y=360:shortest=1[1o];[1o][2]overlay=x=800:y='190+6*sin(t*1.7)'[2o];[2o][3]overlay=x=0:y='-720+mod(t*540,720)',$(words 96 220 "$serif" 0x23402f 'Moss \& Co'),$(words 36 350 "$sans" 0x23402f 'Umbrellas, mended while you wait')"
}
