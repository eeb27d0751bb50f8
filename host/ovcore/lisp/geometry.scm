;; Geometry on points, which are lists of two or three numbers. A 2D point counts as lying
;; at z 0; a result keeps the dimension its first point had.

(define (check-point who p)
  (if (and (list? p) (memv (length p) '(2 3))
           (let every ((rest p)) (or (null? rest) (and (real? (car rest)) (every (cdr rest))))))
      (map exact->inexact p)
      (bad-argument who p)))

(define (coordinates p) (if (= (length p) 2) (append p '(0.0)) p))

;; (polar point angle distance): the point at that angle and distance in the XY plane.
(define (polar point angle distance)
  (let ((p (check-point 'polar point))
        (a (exact->inexact (numeric 'polar angle)))
        (d (exact->inexact (numeric 'polar distance))))
    (cons* (+ (car p) (* d (cos a))) (+ (cadr p) (* d (sin a))) (cddr p))))

;; (distance p1 p2): in 3D, or in the plane when either point is 2D.
(define (distance p1 p2)
  (let* ((a (check-point 'distance p1))
         (b (check-point 'distance p2))
         (flat (or (= (length a) 2) (= (length b) 2)))
         (dx (- (car b) (car a)))
         (dy (- (cadr b) (cadr a)))
         (dz (if flat 0.0 (- (caddr b) (caddr a)))))
    (sqrt (+ (* dx dx) (* dy dy) (* dz dz)))))

;; (angle p1 p2): the angle of the line from p1 to p2 in the XY plane, 0 to 2 pi.
(define (lisp-angle p1 p2)
  (let ((a (check-point 'angle p1)) (b (check-point 'angle p2)))
    (normal-angle (atan (- (cadr b) (cadr a)) (- (car b) (car a))))))

(define (v- a b) (map - a b))
(define (v+ a b) (map + a b))
(define (v* a k) (map (lambda (x) (* x k)) a))
(define (dot a b) (apply + (map * a b)))
(define (cross a b)
  (list (- (* (cadr a) (caddr b)) (* (caddr a) (cadr b)))
        (- (* (caddr a) (car b)) (* (car a) (caddr b)))
        (- (* (car a) (cadr b)) (* (cadr a) (car b)))))

;; (inters p1 p2 p3 p4 [on-segments]): where the line p1-p2 meets the line p3-p4; nil for
;; parallel or skew lines. Unless the fifth argument is given as nil, the point must lie on
;; both segments.
(define* (inters p1 p2 p3 p4 #:optional (on-segments #t))
  (let* ((points (map (lambda (p) (check-point 'inters p)) (list p1 p2 p3 p4)))
         (flat (pair? (filter (lambda (p) (= (length p) 2)) points)))
         (points (map (lambda (p) (if flat (list (car p) (cadr p) 0.0) (coordinates p))) points))
         (a (car points)) (b (cadr points)) (c (caddr points)) (d (cadddr points))
         (d1 (v- b a)) (d2 (v- d c)) (r (v- c a))
         (n (cross d1 d2))
         (nn (dot n n))
         (scale (max 1.0 (dot d1 d1) (dot d2 d2))))
    (if (< nn (* 1e-20 scale scale))
        '()
        (let* ((t (/ (dot (cross r d2) n) nn))
               (u (/ (dot (cross r d1) n) nn))
               (p (v+ a (v* d1 t)))
               (q (v+ c (v* d2 u)))
               (eps 1e-10))
          (cond ((> (sqrt (dot (v- p q) (v- p q))) (* 1e-8 (sqrt scale))) '())
                ((and (lisp-true? on-segments)
                      (or (< t (- eps)) (> t (+ 1 eps)) (< u (- eps)) (> u (+ 1 eps))))
                 '())
                (flat (list (car p) (cadr p)))
                (else p))))))

(module-replace! (current-module) '(polar distance (lisp-angle . angle) inters))
