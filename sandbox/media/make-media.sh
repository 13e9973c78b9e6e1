#!/usr/bin/env bash
# Draws the sample videos into OUTDIR: media/N.mp4, thumbnails/N.jpg and strips/N.jpg (eight stills side by side).
# Needs only ffmpeg and the DejaVu fonts. Videos.cpp repeats titles and lengths, and the tests compare the lengths.
set -euo pipefail
out=${1:?usage: make-media.sh OUTDIR}
mkdir -p "$out"/{media,thumbnails,strips}

# Builds may share OUTDIR: one draws, and the others wait.
exec 9>"$out/lock"
flock 9
drawn=$out/drawn
[ "$drawn" -nt "$0" ] && exit

size=640x360
fps=15

# draw NUMBER TITLE SECONDS GRAPH: the video shows the title and a clock, the stills do not.
draw() {
  local number=$1 title=$2 seconds=$3 graph=$4
  local rate=$((3600 / seconds)) # the same file size for each video
  local text="font='DejaVu Sans\:style=Bold':fontcolor=white:borderw=1:bordercolor=black@0.3:shadowcolor=black@0.5:shadowx=2:shadowy=2"
  local jpeg=(-frames:v 1 -q:v 4 -fflags +bitexact -flags:v +bitexact -update 1)
  ffmpeg -nostdin -hide_banner -loglevel error -y -filter_complex "
      $graph,fps=$fps,trim=duration=$seconds,scale=${size/x/:}:flags=bicubic,setsar=1,format=yuv420p,split=3[picture][still][stills];
      [picture]drawtext=text='$title':fontsize=46:x=32:y=h-104:$text,
        drawtext=text='%{pts\:gmtime\:0\:%M\\\\\:%S} / 00\:$seconds':fontsize=22:x=34:y=h-46:alpha=0.85:$text[video];
      [still]select='gte(t,4)',scale=480:270[thumbnail];
      [stills]select='not(mod(n,floor($seconds*$fps/8)))',scale=160:90,tile=8x1[strip]" \
    -map '[video]' -c:v libx264 -preset superfast -threads 1 -b:v ${rate}k -maxrate $((rate * 4 / 3))k -bufsize $((rate * 2))k \
      -g $((fps * 2)) -pix_fmt yuv420p -movflags +faststart -fflags +bitexact -flags:v +bitexact "$out/media/$number.mp4" \
    -map '[thumbnail]' "${jpeg[@]}" "$out/thumbnails/$number.jpg" -map '[strip]' "${jpeg[@]}" "$out/strips/$number.jpg"
}

# Waits for the two running draws and fails if one of them fails.
both() {
  local job
  for job in $(jobs -p); do wait "$job"; done
}

# geq evaluates its formulas for each pixel, so smooth pictures are computed small and seldom. blended doubles the frames.
smooth="color=black:s=160x90:r=$fps/2,format=gbrp,geq"
blended="format=yuv444p,framerate=$fps:scene=100"

draw 1 'Northern Lights' 24 "$smooth=
  g='18+190*exp(-pow((Y-44-14*sin(X/23+T*0.7)-7*sin(X/9-T*0.9))/(15+6*sin(X/17+T)),2))*(0.72+0.28*sin(X/3.1+2*sin(T)))':
  b='38+Y*0.35+120*exp(-pow((Y-34-16*sin(X/27-T*0.5))/17,2))':
  r='10+Y*0.10+120*exp(-pow((Y-22-13*sin(X/23+T*0.7+0.5))/11,2))*(0.6+0.4*sin(X/4+T))',$blended" &

draw 2 'Deep Dive' 30 "mandelbrot=s=320x180:r=$fps:start_scale=0.09:end_scale=0.0006:end_pts=$((30 * fps)):start_x=-0.743643887037151:
  start_y=-0.131825904205330:maxiter=300:inner=black:outer=normalized_iteration_count,format=gray,gblur=0.5,format=gbrp,
  lutrgb=r='clip(val*1.5-150,0,255)':g='clip(val*1.15-10,0,235)':b='clip(46+val*1.6,0,255)'" &
both
draw 3 'Petri Garden' 16 "life=s=160x90:r=12:ratio=0.14:seed=11:mold=12:mold_color=#164a3a:death_color=#0c2a22:life_color=#c8f06a,
  scale=640:360:flags=neighbor,gblur=2.2" &

draw 4 'Paper Carpet' 20 "sierpinski=s=640x360:r=$fps:seed=7:jump=100:type=carpet,format=gray,gblur=0.8,format=gbrp,
  lutrgb=r='214-val*0.55':g='160-val*0.5':b='104-val*0.3'" &
both
draw 5 'Neon Rain' 14 "cellauto=s=128x72:r=15:rule=30:seed=5:ratio=0.03:scroll=1,vflip,format=gray,lagfun=decay=0.8,
  scale=640:360:flags=bicubic,gblur=2.5,format=gbrp,lutrgb=r='22+val*0.86':g='6+val*0.10':b='52+val*0.62'" &

lava="sin(X/26+T*0.9)+sin(Y/17-T*0.7)+sin(hypot(X-80-40*sin(T*0.4),Y-45)/15-T)"
draw 6 'Lava Lamp' 22 "$smooth=
  r='150+100*sin($lava)':g='60+58*sin(0.4+$lava)':b='44+26*sin(X/40+T*0.5)',$blended" &
both
drop="sin(hypot(X-54,(Y-38)*1.7)/3.4-T*4)*exp(-hypot(X-54,Y-38)/60)"
drop+="+0.6*sin(hypot(X-124,(Y-62)*1.7)/2.8-T*4.6)*exp(-hypot(X-124,Y-62)/40)"
draw 7 'Still Water' 18 "$smooth=r='30+Y*0.35+34*($drop)':g='84+Y*0.50+46*($drop)':b='128+Y*0.45+52*($drop)',$blended" &

sun="clip(20-hypot(X-80,Y-30-T*0.9),0,1)" # Above the horizon, at 60; the glint is below.
glint="clip(sin(Y*1.1+sin(X/7+T*2)*0.8+T*2),0,1)*exp(-abs(X-80)/26)"
draw 8 'Slow Sunset' 26 "$smooth=
  r='clip(if(lt(Y,60),70+Y*2.7+255*$sun,58+190*$glint),0,255)':
  g='clip(if(lt(Y,60),30+Y*1.3+(120-Y*0.8)*$sun,26+110*$glint),0,255)':
  b='clip(if(lt(Y,60),110-Y*0.5-(20+Y*0.4)*$sun,70+30*$glint),0,255)',$blended" &
both
draw 9 'Night Express' 12 "$smooth=
  r='clip(pow(0.5+0.5*sin(260/(4+hypot(X-80,Y-45))+T*9),2)*(0.55+0.45*cos(6*atan2(Y-45,X-80)+T))*hypot(X-80,Y-45)*3.2,0,250)':
  g='clip(pow(0.5+0.5*sin(260/(4+hypot(X-80,Y-45))+T*9),2)*hypot(X-80,Y-45)*1.2,0,190)':
  b='clip(24+(0.5+0.5*sin(260/(4+hypot(X-80,Y-45))+T*9+0.8))*hypot(X-80,Y-45)*2.2,0,255)',$blended"

touch "$drawn"
