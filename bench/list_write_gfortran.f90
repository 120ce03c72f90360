! The peer of list_write_krm.c: the same values, the same two shapes, the
! same unit, compiled by gfortran.
!
! Usage: list_write_gfortran many|each [n]
program list_write_gfortran
  implicit none
  integer, allocatable :: a(:)
  integer :: n, i, status
  integer(8) :: x
  character(len=32) :: shape, arg

  call get_command_argument(1, shape)
  if (shape /= 'many' .and. shape /= 'each') then
    write (0, '(a)') 'usage: list_write_gfortran many|each [n]'
    error stop 2
  end if
  n = 10000000
  call get_command_argument(2, arg, status=status)
  if (status == 0 .and. len_trim(arg) > 0) read (arg, *) n
  if (n < 1) n = 1
  allocate (a(n))

  ! The generator of list_write_krm.c.
  x = 1
  do i = 1, n
    x = mod(x * 1103515245_8 + 12345_8, 2147483648_8)
    a(i) = int((x - 1073741824_8) / ishft(1_8, 4 * mod(i, 8)))
  end do

  if (shape == 'many') then
    write (11, *) (a(i), i = 1, n)
  else
    do i = 1, n
      write (11, *) a(i)
    end do
  end if
end program list_write_gfortran
