# A forge shows a link to a diagram's text; the built pages show its picture.
s|^\[Picture: (.*)\]\(diagrams/(.*)\.dot\)$|<img src="\2.svg" alt="\1" class="diagram"/>|
# The comment above a sample is for the test that compares it.
/^<!-- .* -->$/d
