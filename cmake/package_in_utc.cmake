# Archives of this kind hold local times.
set(ENV{TZ} UTC)
